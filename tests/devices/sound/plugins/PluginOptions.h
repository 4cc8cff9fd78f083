#pragma once

#include <alsa/asoundlib.h>

#include <map>
#include <string>

namespace tavrelin {

/// What a configuration of the sound library says to a plugin: whole numbers and texts by name.
class PluginOptions {
  public:
    explicit PluginOptions(const snd_config_t* configuration);

    [[nodiscard]] bool Has(const std::string& name) const { return texts_.count(name) != 0; }
    /// Empty, or the number given here, when the configuration says nothing.
    [[nodiscard]] std::string Text(const std::string& name) const;
    [[nodiscard]] unsigned int Number(const std::string& name, unsigned int otherwise) const;

  private:
    std::map<std::string, std::string> texts_;
};

} // namespace tavrelin
