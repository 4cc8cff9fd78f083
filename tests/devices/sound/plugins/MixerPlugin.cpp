// A mixer for a machine without a sound card, as a control plugin of the sound library: what it
// controls lives in a text file (MixerState.h). In a configuration of the sound library:
//
//     ctl_type.tavrelin_mixer { lib "FOLDER/libasound_module_ctl_tavrelin_mixer.so" }
//     ctl.default { type tavrelin_mixer  state "FILE" }

#include "tests/devices/sound/plugins/MixerState.h"
#include "tests/devices/sound/plugins/PluginOptions.h"

#include <alsa/asoundlib.h>
#include <alsa/control_external.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace {

using tavrelin::MixerState;
using tavrelin::PluginOptions;

struct MixerPlugin {
    explicit MixerPlugin(const std::string& path) : state(path) {}

    MixerState state;
    snd_ctl_ext_t device{};
};

const MixerState& StateOf(const snd_ctl_ext_t* device) {
    return static_cast<const MixerPlugin*>(device->private_data)->state;
}

void Close(snd_ctl_ext_t* device) {
    delete static_cast<MixerPlugin*>(device->private_data);
}

int CountControls(snd_ctl_ext_t* device) {
    return static_cast<int>(StateOf(device).Read().size());
}

int NameControl(snd_ctl_ext_t* device, unsigned int position, snd_ctl_elem_id_t* id) {
    const auto control = StateOf(device).At(position);
    if (!control) {
        return -ENOENT;
    }
    snd_ctl_elem_id_set_interface(id, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_id_set_name(id, control->name.c_str());
    return 0;
}

// A control's key is its position.
snd_ctl_ext_key_t FindControl(snd_ctl_ext_t* device, const snd_ctl_elem_id_t* id) {
    const auto controls = StateOf(device).Read();
    const auto found = std::find_if(
        controls.begin(), controls.end(),
        [name = snd_ctl_elem_id_get_name(id)](const auto& each) { return each.name == name; });
    return found == controls.end() ? SND_CTL_EXT_KEY_NOT_FOUND
                                   : static_cast<snd_ctl_ext_key_t>(found - controls.begin());
}

int DescribeControl(snd_ctl_ext_t* device, snd_ctl_ext_key_t key, int* type, unsigned int* access,
                    unsigned int* channels) {
    const auto control = StateOf(device).At(key);
    if (!control) {
        return -ENOENT;
    }
    *type = control->isBoolean ? SND_CTL_ELEM_TYPE_BOOLEAN : SND_CTL_ELEM_TYPE_INTEGER;
    *access = SND_CTL_EXT_ACCESS_READWRITE;
    *channels = static_cast<unsigned int>(control->values.size());
    return 0;
}

int TellRange(snd_ctl_ext_t* device, snd_ctl_ext_key_t key, long* minimum, long* maximum,
              long* step) {
    const auto control = StateOf(device).At(key);
    if (!control) {
        return -ENOENT;
    }
    *minimum = control->minimum;
    *maximum = control->maximum;
    *step = 1;
    return 0;
}

int ReadValues(snd_ctl_ext_t* device, snd_ctl_ext_key_t key, long* values) {
    const auto control = StateOf(device).At(key);
    if (!control) {
        return -ENOENT;
    }
    std::copy(control->values.begin(), control->values.end(), values);
    return 0;
}

// 1 when this changed something, 0 when the values were so before.
int WriteValues(snd_ctl_ext_t* device, snd_ctl_ext_key_t key, long* values) {
    const auto control = StateOf(device).At(key);
    if (!control) {
        return -ENOENT;
    }
    const std::vector<long> wanted(values,
                                   values + static_cast<std::ptrdiff_t>(control->values.size()));
    if (wanted == control->values) {
        return 0;
    }
    return StateOf(device).Write(key, wanted) ? 1 : -EIO;
}

int NoEvents(snd_ctl_ext_t* /*device*/, snd_ctl_elem_id_t* /*id*/, unsigned int* /*mask*/) {
    return -EAGAIN;
}

constexpr snd_ctl_ext_callback_t kCallbacks = [] {
    snd_ctl_ext_callback_t callbacks{};
    callbacks.close = Close;
    callbacks.elem_count = CountControls;
    callbacks.elem_list = NameControl;
    callbacks.find_elem = FindControl;
    callbacks.get_attribute = DescribeControl;
    callbacks.get_integer_info = TellRange;
    callbacks.read_integer = ReadValues;
    callbacks.write_integer = WriteValues;
    callbacks.read_event = NoEvents;
    return callbacks;
}();

template <std::size_t Size>
void SetText(char (&destination)[Size], const std::string& text) {
    text.copy(&destination[0], Size - 1);
}

void Introduce(MixerPlugin& plugin) {
    plugin.device.version = SND_CTL_EXT_VERSION;
    plugin.device.card_idx = 0;
    SetText(plugin.device.id, "tavrelin");
    SetText(plugin.device.driver, "tavrelin_mixer");
    SetText(plugin.device.name, "Mixer in a file");
    SetText(plugin.device.longname, "Mixer in a file");
    SetText(plugin.device.mixername, "Mixer in a file");
    plugin.device.poll_fd = -1;
    plugin.device.callback = &kCallbacks;
    plugin.device.private_data = &plugin;
}

} // namespace

extern "C" {

SND_CTL_PLUGIN_DEFINE_FUNC(tavrelin_mixer) {
    static_cast<void>(root);
    const PluginOptions options(conf);
    if (!options.Has("state")) {
        SNDERR("tavrelin_mixer: needs the path of its state file");
        return -EINVAL;
    }
    auto plugin = std::make_unique<MixerPlugin>(options.Text("state"));
    Introduce(*plugin);
    const int error = snd_ctl_ext_create(&plugin->device, name, mode);
    if (error < 0) {
        return error;
    }
    *handlep = plugin.release()->device.handle;
    return 0;
}

SND_CTL_PLUGIN_SYMBOL(tavrelin_mixer)
}
