#pragma once

#include <alsa/asoundlib.h>

#include <memory>

namespace tavrelin {

/// One element of the sound card's mixer, opened for one operation.
class MixerElement {
  public:
    /// Opens the mixer and looks the element up; nobody is told when that fails.
    explicit MixerElement(const char* name);
    MixerElement(const MixerElement&) = delete;
    MixerElement& operator=(const MixerElement&) = delete;
    MixerElement(MixerElement&&) = delete;
    MixerElement& operator=(MixerElement&&) = delete;
    ~MixerElement() = default;

    /// Null when a step failed. Belongs to the mixer and ends with it.
    [[nodiscard]] snd_mixer_elem_t* Get() const { return element_; }

    /// Closes the mixer before the end of the scope does; false when that fails.
    bool Close();

  private:
    struct CloseMixer {
        void operator()(snd_mixer_t* mixer) const { snd_mixer_close(mixer); }
    };

    bool OpenMixer();
    [[nodiscard]] bool LoadMixer() const;

    std::unique_ptr<snd_mixer_t, CloseMixer> mixer_;
    snd_mixer_elem_t* element_ = nullptr;
};

} // namespace tavrelin
