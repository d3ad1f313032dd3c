// Lets the objects of a thread end before the memory that they lie in.
#pragma once

namespace Public::Base {

/// To be named by what is always part of a program, so that this is too.
void keepThreadLocalsInOrder();

}  // namespace Public::Base
