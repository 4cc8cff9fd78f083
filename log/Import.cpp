#include "log/Complaint.h"
#include "log/Database.h"
#include "log/Options.h"
#include "log/Table.h"

#include <array>
#include <iostream>

namespace tavrelin::daylog {

int ImportFiles(const Options& options) {
    Database database(options.database, Database::Use::Write);
    if (!database.IsGood()) {
        return kFound;
    }
    std::array<std::uint64_t, 4> counts{}; // by Database::Import
    {
        const auto sources = FindSources(options.paths);
        Progress progress(TotalBytes(sources));
        for (const Source& source : sources) {
            ++counts.at(static_cast<std::size_t>(database.Take(source, progress)));
            if (!database.IsGood()) {
                break;
            }
        }
    }
    std::cout << counts[0] << " imported, " << counts[1] << " imported anew, " << counts[2]
              << " as they were, " << counts[3] << " refused\n";
    return FlushOutput() && !Complained() ? kDone : kFound;
}

} // namespace tavrelin::daylog
