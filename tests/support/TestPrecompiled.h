// Heavy headers of the tests, compiled once.
#pragma once
#include "OrvPrecompiled.h"
#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include "Asserting.h"
