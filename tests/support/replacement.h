#pragma once

/// A definition of a function of the C library that takes its place in this program: the library
/// under test calls it through the dynamic linker, which finds a program's own definitions first.
#define ORB_TEST_REPLACEMENT extern "C" __attribute__((visibility("default")))
