#pragma once

#include <string>

namespace sim {

/// A place beside the folder of this program.
std::string Beside(const char* place);

/// The library that puts the simulated board under a program.
class BoardLibrary {
  public:
    BoardLibrary();
    BoardLibrary(const BoardLibrary&) = delete;
    BoardLibrary& operator=(const BoardLibrary&) = delete;
    ~BoardLibrary();

    /// Why it cannot be loaded, found by loading it in a process of its own; empty when it can.
    std::string Problem() const;
    /// A name that the dynamic loader takes as it stands: it splits lists of libraries at blanks
    /// and colons, and expands dollars.
    std::string LoaderName() const;
    /// What the name stands on, to be closed by the program; -1 when it stands by itself.
    int Descriptor() const { return descriptor_; }

  private:
    std::string path_;
    int descriptor_ = -1;
};

} // namespace sim
