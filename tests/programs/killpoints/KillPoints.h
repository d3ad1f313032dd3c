// Breaking a process off at its n-th change of the file system.
#pragma once

/// The program's own versions of the system calls that change files count, and at the chosen one end the process by
/// force, before the call is made. Only a process that does nothing else is ever armed.
namespace killpoints {

enum class Fault {
    Kill,       ///< what was done before stays
    HalfWrite,  ///< likewise, but half of a write has been done
    PowerCut,   ///< what was not brought to the disk is lost: content is spoilt, names are as they were
    DataLoss,   ///< names stay, content that was not brought to the disk is spoilt
};

/// Counts from now on. @param at the number of the call to end at, from 1; 0 counts only
/// @param attic a directory on the same disk, for what may have to come back
void arm(int at, Fault fault, const char* attic);
/// Calls counted so far in this process.
int counted();

}  // namespace killpoints
