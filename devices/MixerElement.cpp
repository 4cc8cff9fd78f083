#include "devices/MixerElement.h"

#include "devices/SoundCard.h"

namespace tavrelin {

namespace {

struct FreeElementId {
    void operator()(snd_mixer_selem_id_t* id) const { snd_mixer_selem_id_free(id); }
};
using ElementId = std::unique_ptr<snd_mixer_selem_id_t, FreeElementId>;

// Null when memory ran out.
ElementId NewElementId(const char* name) {
    snd_mixer_selem_id_t* id = nullptr;
    if (snd_mixer_selem_id_malloc(&id) < 0) {
        return nullptr;
    }
    snd_mixer_selem_id_set_index(id, 0);
    snd_mixer_selem_id_set_name(id, name);
    return ElementId(id);
}

} // namespace

MixerElement::MixerElement(const char* name) {
    const ElementId id = NewElementId(name);
    if (id != nullptr && OpenMixer() && LoadMixer()) {
        element_ = snd_mixer_find_selem(mixer_.get(), id.get());
    }
}

bool MixerElement::Close() {
    element_ = nullptr; // goes with the mixer
    return mixer_ == nullptr || snd_mixer_close(mixer_.release()) == 0;
}

bool MixerElement::OpenMixer() {
    snd_mixer_t* mixer = nullptr;
    if (snd_mixer_open(&mixer, 0) < 0) {
        return false;
    }
    mixer_.reset(mixer);
    return true;
}

bool MixerElement::LoadMixer() const {
    return snd_mixer_attach(mixer_.get(), kSoundCard) >= 0 &&
           snd_mixer_selem_register(mixer_.get(), nullptr, nullptr) >= 0 &&
           snd_mixer_load(mixer_.get()) >= 0;
}

} // namespace tavrelin
