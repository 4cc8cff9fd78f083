# The summary of tavrelin-log in awk, byte for byte, of days in UTC without records that interleave: what it
# is measured against.
BEGIN {
    FS = ","
}

function keep(period, name, value,   n, distance) {
    n = ++count[period, name]
    distance = value - mean[period, name]
    mean[period, name] += distance / n
    squares[period, name] += distance * (value - mean[period, name])
    if (n == 1 || value < least[period, name]) least[period, name] = value
    if (n == 1 || value > most[period, name]) most[period, name] = value
}

function trend(name, x, y,   distance) {
    ++points[name]
    distance = x - meanX[name]
    meanX[name] += distance / points[name]
    meanY[name] += (y - meanY[name]) / points[name]
    squaresX[name] += distance * (x - meanX[name])
    products[name] += distance * (y - meanY[name])
}

function cycle(period, seconds) {
    ++lengths[period, seconds]
    ++cycles[period]
    if (seconds > longest[period]) longest[period] = seconds
}

function median(period,   seconds, below) {
    for (seconds = 0; below * 2 < cycles[period]; ++seconds) below += lengths[period, seconds]
    return seconds - 1
}

function above(period, limit,   seconds, n) {
    for (seconds = limit + 1; seconds <= longest[period]; ++seconds) n += lengths[period, seconds]
    return n + 0
}

function broken(kind) {
    ++lines[kind]
    if (++brokenCount <= 20) brokenText = brokenText "  " FILENAME ":" FNR ": " kind ": " $0 "\n"
}

{
    if (substr($1, 1, 10) != date) {
        if ($1 !~ /^[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:/) {
            broken("unknown")
            next
        }
        date = substr($1, 1, 10)
        if (!(date in known)) {
            known[date]
            days[++dayCount] = date
        }
    }
}

$1 ~ /^.......... ([01][0-9]|2[0-3]):[0-5]?[0-9]:[0-5]?[0-9]$/ && $2 ~ /^ *-?[0-9]+$/ && NF >= 5 && /,,$/ {
    ++lines["sample"]
    ++samples[date]
    next
}

NF == 8 && $2 == "" && $3 == "" && $1 ~ /^.......... ([01][0-9]|2[0-3]):[0-5][0-9]\.[0-5][0-9]$/ {
    ++lines["result"]
    ++results[date]
    time = mktime(substr($1, 1, 4) " " substr($1, 6, 2) " " substr($1, 9, 2) " " substr($1, 12, 2) " " \
        substr($1, 15, 2) " " substr($1, 18, 2))
    iso = date "T" substr($1, 12, 2) ":" substr($1, 15, 2) ":" substr($1, 18, 2)
    if (lines["result"] == 1) first = time
    else {
        cycle(date, time - last)
        cycle("all", time - last)
        if (time - last > 30) {
            ++candidates
            begin[candidates] = lastIso
            end[candidates] = iso
            span[candidates] = time - last
        }
    }
    last = time
    lastIso = iso
    if ($5 == "nan") {
        ++flagged[date]
        ++flagged["all"]
        if (++flaggedCount <= 20)
            flaggedText = flaggedText "  " FILENAME ":" FNR ": " iso ": not a number\n"
    } else {
        keep(date, "chlorine", $5)
        keep("all", "chlorine", $5)
    }
    keep(date, "dark", $6)
    keep("all", "dark", $6)
    keep(date, "reference", $7)
    keep("all", "reference", $7)
    trend("dark", (time - first) / 86400, $6)
    trend("reference", (time - first) / 86400, $7)
    next
}

{
    broken("torn")
}

function plural(n, one) {
    return n + 0 " " one (n == 1 ? "" : "s")
}

function show(title, period, measured, sampled,   n, name, names, i) {
    printf "%s: %s, %s\n", title, plural(measured, "measurement"), plural(sampled, "sample")
    printf "  cycle      median %d s, longest %d s, %s\n", median(period), longest[period],
        plural(above(period, limit), "gap")
    n = count[period, "chlorine"]
    printf "  chlorine   mean %.6g, min %.6g, max %.6g, standard deviation %.6g\n", mean[period, "chlorine"],
        least[period, "chlorine"], most[period, "chlorine"], sqrt(squares[period, "chlorine"] / (n - 1))
    split("dark reference", names, " ")
    for (i = 1; i <= 2; ++i) {
        name = names[i]
        printf "  %-11smean %.6g, min %.6g, max %.6g%s\n", name, mean[period, name], least[period, name],
            most[period, name],
            period == "all" ? sprintf(", drift %.6g counts a day", products[name] / squaresX[name]) : ""
    }
    if (flagged[period]) printf "  flagged    %d not a number\n", flagged[period]
}

END {
    limit = 2 * median("all")
    for (i = 1; i <= dayCount; ++i) show(days[i], days[i], results[days[i]], samples[days[i]])
    show("in all", "all", lines["result"], lines["sample"])
    print "gaps longer than " limit " s"
    for (i = 1; i <= candidates; ++i)
        if (span[i] > limit) print "  " begin[i] " to " end[i] ", " span[i] " s"
    printf "flagged records\n%s", flaggedText
    if (flaggedCount > 20) print "  and " flaggedCount - 20 " more"
    printf "lines: %d read: %d results, %d samples, %d torn, %d unknown\n", NR, lines["result"], lines["sample"],
        lines["torn"], lines["unknown"]
    printf "lines that are no record\n%s", brokenText
    if (brokenCount > 20) print "  and " brokenCount - 20 " more"
}
