#pragma once

/// Marks what liborb-gnss.so exports; everything else in it is hidden.
#define ORB_GNSS_EXPORT __attribute__((visibility("default")))

/// Hides a private member function of an exported class.
#define ORB_GNSS_HIDDEN __attribute__((visibility("hidden")))
