#include "app/ResultRecord.h"

#include "storage/LocalTime.h"
#include "storage/NumberText.h"

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
