#pragma once

#include "tests/kernel/contract/Answers.h"

#include <map>

namespace contract {

/// Makes calls that are written as words, and tells in words what came of them. Descriptors and
/// mappings go by the names that the table gives them.
class Caller {
  public:
    std::string Make(Words words);

  private:
    struct Mapping {
        void* address = nullptr;
        std::size_t size = 0;
    };

    std::string Open(const std::string& name, const Words& words);
    std::string Map(const std::string& name, const Words& words);
    std::string Unmap(const std::string& name);
    std::string Register(const std::string& call, const Words& words) const;
    std::string Path(const std::string& word) const;
    int Descriptor(const std::string& name) const;

    std::string folder_;
    std::map<std::string, int> descriptors_;
    std::map<std::string, Mapping> mappings_;
};

} // namespace contract
