# awk -f truth.awk SCENARIO LOG: the result records of a day's log beside what the samples of the
# scenario must give. Status 1 when any value differs or a record is missing or too much.
#
# The truth: absorbance A dims the light to 10^-A of the reference's, above the dark counts; the
# detector gives whole counts; chlorine is A times the calibration's slope.

BEGIN { slope = 1714.8182373046875 }

FNR == 1 { file++ }

file == 1 && /^absorbance *=/ {
    gsub(/.*\[|\].*/, "")
    samples = split($0, absorbance, / *, */)
}
file == 1 && /^dark *=/ { dark = $NF }
file == 1 && /^reference *=/ { reference = $NF }

# Only result records have empty columns after the time.
file == 2 && /,,,/ {
    records++
    split($0, field, ",")
    sample = int(dark + (reference - dark) * 10 ^ -absorbance[records] + 0.5)
    printf "\nMeasurement %d, recorded %s\n", records, field[1]
    printf "  %-10s  %12s  %12s\n", "", "record", "truth"
    compare("absorbance", field[4], absorbance[records])
    compare("chlorine", field[5], absorbance[records] * slope)
    compare("dark", field[6], dark)
    compare("reference", field[7], reference)
    compare("sample", field[8], sample)
}

# Both sides as the instrument prints them, with six significant digits.
function compare(name, recorded, truth) {
    truth = sprintf("%.6g", truth)
    equal = (recorded "" == truth "")
    differing += !equal
    printf "  %-10s  %12s  %12s  %s\n", name, recorded, truth, equal ? "equal" : "DIFFERS"
}

END {
    if (records != samples)
        printf "\n%d result records of %d samples\n", records, samples
    exit(differing > 0 || records != samples)
}
