#pragma once

namespace orb::ctl {

/// Does what the command line asks for; returns the exit status.
int execute(int argc, char** argv);

}  // namespace orb::ctl
