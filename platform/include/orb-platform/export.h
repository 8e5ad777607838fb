#pragma once

/// Marks what `liborb-platform.so.0` offers. A library that takes its place exports the same names.
#define ORB_PLATFORM_EXPORT __attribute__((visibility("default")))
