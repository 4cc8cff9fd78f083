#pragma once

#include "log/CivilTime.h"

#include <optional>
#include <string>
#include <vector>

namespace tavrelin::daylog {

/// What a command is asked; each knows some of these.
struct Options {
    std::vector<std::string> paths; ///< files, folders, databases
    bool json = false;
    bool zoned = false; ///< a zone was named: times are shown with their offset
    std::optional<CivilSeconds> from;
    std::optional<CivilSeconds> to;          ///< the first moment that no longer counts
    std::string step;                        ///< text in the description of a step
    std::optional<CivilSeconds> measurement; ///< the time of its result record
    std::string database;                    ///< to import into
    std::string grab;                        ///< file of grab samples
    double withinMinutes = 15.0;             ///< between a grab sample and a result
    double tolerancePercent = 15.0;          ///< of the grab sample's value
    double tolerance = 0.1;                  ///< at least, in its unit
    double scale = 1.0;                      ///< chlorine in the user's unit
    std::string unit = "as calibrated";
    std::string title;
    std::string folder = "/mnt/sd-card"; ///< where new records are waited for
    std::string format = "json";
    std::string output; ///< file of a picture or of what is printed
    bool samples = false;
    int (*run)(const Options& options) = nullptr;

    [[nodiscard]] bool Selects(CivilSeconds time) const {
        return (!from || time >= *from) && (!to || time < *to);
    }
};

/// The commands: each does its work, says what it found and gives the exit status.
int ListResults(const Options& options);
int ListSamples(const Options& options);
int Summarize(const Options& options);
int ImportFiles(const Options& options);
int VerifyResults(const Options& options);
int DrawChart(const Options& options);
int Follow(const Options& options);

} // namespace tavrelin::daylog
