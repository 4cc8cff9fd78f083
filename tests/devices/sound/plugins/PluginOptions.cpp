#include "tests/devices/sound/plugins/PluginOptions.h"

#include <cstdlib>

namespace tavrelin {

namespace {

std::string Value(const snd_config_t* entry) {
    long number = 0;
    const char* text = nullptr;
    if (snd_config_get_integer(entry, &number) == 0) {
        return std::to_string(number);
    }
    return snd_config_get_string(entry, &text) == 0 ? text : "";
}

} // namespace

PluginOptions::PluginOptions(const snd_config_t* configuration) {
    snd_config_iterator_t each = nullptr;
    snd_config_iterator_t next = nullptr;
    snd_config_for_each(each, next, configuration) {
        const snd_config_t* entry = snd_config_iterator_entry(each);
        const char* name = nullptr;
        if (snd_config_get_id(entry, &name) == 0) {
            texts_[name] = Value(entry);
        }
    }
}

std::string PluginOptions::Text(const std::string& name) const {
    const auto found = texts_.find(name);
    return found == texts_.end() ? "" : found->second;
}

unsigned int PluginOptions::Number(const std::string& name, unsigned int otherwise) const {
    const auto found = texts_.find(name);
    return found == texts_.end()
               ? otherwise
               : static_cast<unsigned int>(std::strtoul(found->second.c_str(), nullptr, 10));
}

} // namespace tavrelin
