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
    int (*run)(const Options& options) = nullptr;

    [[nodiscard]] bool Selects(CivilSeconds time) const {
        return (!from || time >= *from) && (!to || time < *to);
    }
};

/// The commands: each does its work, says what it found and gives the exit status.
int ListResults(const Options& options);
int ListSamples(const Options& options);
int Summarize(const Options& options);

} // namespace tavrelin::daylog
