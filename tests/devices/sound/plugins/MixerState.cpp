#include "tests/devices/sound/plugins/MixerState.h"

#include <cstdio>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace tavrelin {

namespace {

std::optional<MixerControl> Parsed(const std::string& line) {
    std::istringstream text(line);
    std::string type;
    MixerControl control;
    text >> type >> std::quoted(control.name);
    control.isBoolean = type == "boolean";
    if (type == "integer") {
        text >> control.minimum >> control.maximum;
    } else if (!control.isBoolean) {
        return std::nullopt;
    }
    for (long value = 0; text >> value;) {
        control.values.push_back(value);
    }
    return control;
}

void Print(std::ostream& text, const MixerControl& control) {
    text << (control.isBoolean ? "boolean " : "integer ") << std::quoted(control.name);
    if (!control.isBoolean) {
        text << ' ' << control.minimum << ' ' << control.maximum;
    }
    for (const long value : control.values) {
        text << ' ' << value;
    }
    text << '\n';
}

} // namespace

std::vector<MixerControl> MixerState::Read() const {
    std::ifstream file(path_);
    std::vector<MixerControl> controls;
    for (std::string line; std::getline(file, line);) {
        if (auto control = Parsed(line)) {
            controls.push_back(*std::move(control));
        }
    }
    return controls;
}

std::optional<MixerControl> MixerState::At(std::size_t position) const {
    const std::vector<MixerControl> controls = Read();
    if (position >= controls.size()) {
        return std::nullopt;
    }
    return controls[position];
}

bool MixerState::Write(std::size_t position, const std::vector<long>& values) const {
    std::vector<MixerControl> controls = Read();
    if (position >= controls.size()) {
        return false;
    }
    controls[position].values = values;
    const std::string draft = path_ + ".new";
    {
        std::ofstream file(draft);
        for (const MixerControl& control : controls) {
            Print(file, control);
        }
        if (!file.flush()) {
            return false;
        }
    }
    return std::rename(draft.c_str(), path_.c_str()) == 0;
}

} // namespace tavrelin
