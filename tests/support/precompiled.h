// What nearly every test includes, compiled once for all: reading GoogleTest takes as long as
// compiling a test. Sources include what they need all the same.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>
