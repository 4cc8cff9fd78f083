#include "app/ResultRecord.h"

#include "base/LocalTime.h"
#include "base/NumberText.h"

namespace tavrelin {

namespace {

std::string Figure(float number) {
    return GeneralText(static_cast<double>(number));
}

} // namespace

std::string ResultRecord(const MeasurementResult& result) {
    return TimestampText() + ",,," + Figure(result.absorbance) + "," + Figure(result.chlorine) +
           "," + Figure(result.darkCount) + "," + Figure(result.reference) + "," +
           Figure(result.reactedSample) + "\n";
}

} // namespace tavrelin
