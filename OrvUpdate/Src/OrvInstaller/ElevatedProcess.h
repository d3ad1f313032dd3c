// Starting the installer program.
#pragma once

#include "Public/Base/System.h"

namespace Tarnwick::OrvUpdate {

/// Starts a program and does not wait for it.
/// @param canRaiseRights false for a system that knows no raised rights: the program then gets those of this one
/// @return false when it could not be started
bool startInstallerProgram(Public::Base::ProgramStart start, bool canRaiseRights);

}  // namespace Tarnwick::OrvUpdate
