#pragma once

#include <vector>

namespace orb::bench {

using Bytes = std::vector<unsigned char>;

}  // namespace orb::bench
