// Heavy headers of the tests, compiled once.
#pragma once
#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include "Asserting.h"
#include "OrvPrecompiled.h"
