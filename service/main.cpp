#include "base/Console.h"
#include "service/Commands.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string>
#include <string_view>

namespace {

using namespace tavrelin;
using namespace tavrelin::service;

constexpr std::string_view kHelp = "--help";

struct Command {
    std::string_view name;
    std::string_view arguments;
    std::string_view summary;
    std::string_view details;
    int (*run)(const Arguments& arguments);
};

constexpr std::array<Command, 15> kCommands = {{
    {"state-table", "", "Print the steps of a measurement",
     "Prints every step with its settings. Goes through the table twice, to show that it wraps.",
     StateTableCommand},
    {"self-test", "", "Compute absorbance and chlorine of fixed readings",
     "Prints two of each. They must read 0.107906 and 0.5688, 185.04 and 975.389; a reading that\n"
     "is refused shows as a line that begins with ERROR. Status 0 says that they were printed.",
     SelfTestCommand},
    {"board-check", "", "Look whether the board has all that is needed",
     "Prints a line for each part of the board: ok or missing, where it was looked for, and the\n"
     "likely cause; - for what belongs to a part that is missing. Only looks: a line that is free\n"
     "is exported for a moment, and none is driven. Status 1 when anything is missing.",
     BoardCheckCommand},
    {"safe-state", "", "Switch off what an ended run left on, and give it back",
     "Closes the valve, stops both motors, puts the light out, disables the driver chips and "
     "gives\n"
     "back the lines and PWM channels of a run, and no others; says what it did in a line each.\n"
     "Meant for a run that has ended: a running instrument it takes its lines away from. Status 1\n"
     "when something stays on or exported.",
     SafeStateCommand},
    {"alarm", "[--for SECONDS]", "Sound the alarm",
     "Switches the output on at full volume and repeats alarm.wav with amixer and aplay for\n"
     "SECONDS, 1 to 3600 (3 unless given), or until it is interrupted; what the player has begun\n"
     "it plays to the end. Takes alarm.wav of the working directory, else that of\n"
     "/usr/share/tavrelin, and no other: its name would go to a shell as it stands. Status 0 says\n"
     "that a player was started, not that a sound was heard: the tools' own complaints are on\n"
     "standard error.",
     AlarmCommand},
    {"tone", "", "Play the rising test tone",
     "Plays some 5 s on the default device of the sound library, at the volume that is set, and\n"
     "reports each period.",
     ToneCommand},
    {"volume", "PERCENT", "Switch the sound on and set its volume",
     "Switches \"Output Mixer HiFi\" on and sets all channels of \"Master\" to PERCENT, 0 to 100, "
     "of\n"
     "its highest value. Tries both, whatever becomes of the other.",
     VolumeCommand},
    {"indicator", "[CODE]", "Show a colour on the remote indicator",
     "Sets the indicator's lines up and shows colour CODE: 0 idle, 1 to 10 colours, above that\n"
     "all lines low. The lines keep their levels when the command ends. Without CODE starts the\n"
     "indicator, which shows colour 1; status 0 then says that it was tried.",
     IndicatorCommand},
    {"cable-length", "", "Measure the length of the remote indicator's cable",
     "Shows the test colour, reads the two voltages, prints the length and shows the idle colour.",
     CableLengthCommand},
    {"read-adc", "CHANNEL", "Read a voltage of the board's own converter",
     "Prints the voltage of CHANNEL, 0 to 11.", ReadAdcCommand},
    {"register", "LINE [LEVEL]", "Read or set a line in the controller's registers",
     "Prints the level of LINE, A0 to D31, straight from the register: a line that is in use can\n"
     "be read as well. With LEVEL, 0 or 1, sets it first, past all locks; a line that is no "
     "output\n"
     "does not follow, as the printed level shows. Needs a kernel that leaves /dev/mem open for\n"
     "the controller's page.",
     RegisterCommand},
    {"wait-edge", "LINE [--for SECONDS]", "Wait for an edge of a line",
     "Takes LINE, A0 to D31, makes it an input, waits for its next edge for SECONDS, 1 to 3600\n"
     "(10 unless given), prints the level after it and gives the line back. Status 1 without an\n"
     "edge, and for a line that is taken already, which is left alone.",
     WaitEdgeCommand},
    {"storage", "", "List the mounted file systems with their space",
     "Prints total, free and available bytes of each; leaves out what cannot be examined.",
     StorageCommand},
    {"card", "", "Tell whether the SD card is there and mounted",
     "Prints 1 or 0 for each of the two, and how many mounts of its partition a shell counts. A\n"
     "card that is listed but not in the slot was pulled while it was mounted, and one that takes\n"
     "no records may have been: umount /mnt/sd-card makes the instrument mount it anew.",
     CardCommand},
    {"log-message", "TEXT...", "Hand messages to the buffered log",
     "Each TEXT of at most 29 characters is kept as it is, without a newline, while the card is\n"
     "mounted. The 240th writes all 240 to the day's log. Fewer are dropped when the command "
     "ends,\n"
     "because they wait in its memory only: it says how many did.",
     LogMessageCommand},
}};

std::string Invocation(const Command& command) {
    std::string text(command.name);
    if (!command.arguments.empty()) {
        text += " " + std::string(command.arguments);
    }
    return text;
}

int PrintHelp() {
    constexpr std::size_t summaryColumn = 34;
    std::string text = "Usage: tavrelin-service COMMAND [ARGUMENTS]\n\n"
                       "Calls one routine of the instrument.\n\n";
    for (const Command& command : kCommands) {
        std::string invocation = Invocation(command);
        invocation.resize(std::max(invocation.size() + 1, summaryColumn), ' ');
        text += "  " + invocation + std::string(command.summary) + "\n";
    }
    text += "\ntavrelin-service COMMAND --help says more about a command.\n"
            "Exit status: 0 when the routine succeeded, 1 when it failed, 2 for wrong usage.";
    PrintLineAndFlush(text);
    return kDone;
}

int PrintHelp(const Command& command) {
    PrintLineAndFlush("Usage: tavrelin-service " + Invocation(command) + "\n\n" +
                      std::string(command.details));
    return kDone;
}

int RunCommand(const Command& command, const Arguments& arguments) {
    if (!arguments.empty() && arguments.front() == kHelp) {
        return PrintHelp(command);
    }
    return command.run(arguments);
}

int Refuse(const std::string& what) {
    std::cerr << "tavrelin-service: " + what + "; see tavrelin-service --help\n";
    return kWrongUsage;
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) {
        return Refuse("needs a command");
    }
    const std::string name = argv[1];
    if (name == kHelp) {
        return PrintHelp();
    }
    const auto* const command =
        std::find_if(kCommands.begin(), kCommands.end(),
                     [&name](const Command& candidate) { return candidate.name == name; });
    if (command == kCommands.end()) {
        return Refuse("no command '" + name + "'");
    }
    return RunCommand(*command, Arguments(argv + 2, argv + argc));
}
