// Commands for the card and what is kept on it.

#include "base/Console.h"
#include "service/BufferedLog.h"
#include "service/Commands.h"
#include "storage/CardAccess.h"
#include "storage/StorageSpace.h"

#include <cstddef>
#include <iostream>

namespace tavrelin::service {

namespace {

void ReportPending(std::size_t accepted) {
    const std::size_t pending = BufferedLogPending();
    PrintLine(std::to_string(accepted) + " accepted, " + std::to_string(pending) + " pending");
    if (pending > 0) {
        PrintLine("Only the 240th message writes them to the log: this program's end drops them.");
    }
}

} // namespace

int StorageCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("storage", arguments)) {
        return *status;
    }
    const mntent* entry = nullptr;
    print_storage_space(entry);
    return kDone;
}

int CardCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("card", arguments)) {
        return *status;
    }
    PrintLine(std::string("In the slot: ") + (IsCardPresent() ? "1" : "0"));
    PrintLine(std::string("Listed as mounted: ") + (IsCardMounted() ? "1" : "0"));
    std::cout << "Mounts of its partition: ";
    // What tells is the count that the shell prints; the answer is false after any shell that ended
    // by itself.
    is_mmc_partition_mounted_by_shell();
    return kDone;
}

int LogMessageCommand(const Arguments& arguments) {
    if (arguments.empty()) {
        return WrongUsage("log-message", "takes at least one TEXT");
    }
    std::size_t accepted = 0;
    for (const std::string& text : arguments) {
        if (BufferedLogWrite(text)) {
            ++accepted;
        } else {
            std::cerr << "tavrelin-service log-message: refused '" + text +
                             "': longer than 29 characters, or the card is not mounted\n";
        }
    }
    ReportPending(accepted);
    return StatusOf(accepted == arguments.size());
}

} // namespace tavrelin::service
