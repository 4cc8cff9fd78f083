#pragma once

#include "tests/support/Command.h"

#include <string>
#include <vector>

namespace tavrelin {

using Words = std::vector<std::string>;

/// A binary of this build: the launcher, the instrument.
std::string Binary(const std::string& name);
/// One of the programs that go wrong.
std::string testProgram(const std::string& name);

/// Runs `simulate` with options and a program, with free calls.
CommandResult Simulate(const Words& options, const Words& program);
/// Runs `simulate` on the troublemaker.
CommandResult SimulateTrouble(const Words& trouble, const Words& options = {});

} // namespace tavrelin
