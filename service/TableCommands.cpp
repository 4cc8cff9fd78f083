// Commands that print what the program holds, and touch nothing of the board.

#include "app/CalculatorSelfTest.h"
#include "service/Commands.h"
#include "service/Diagnostics.h"

namespace tavrelin::service {

int StateTableCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("state-table", arguments)) {
        return *status;
    }
    PrintStateTable();
    return kDone;
}

int SelfTestCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("self-test", arguments)) {
        return *status;
    }
    testAbsorbance();
    testChlorineConcentration();
    return kDone;
}

} // namespace tavrelin::service
