#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orb::ctl {

/// A field of a reply: its number or text, and the unit of the number.
struct ReplyField {
  std::string name;
  std::string value;
  std::string unit;
};

/// The fields of a payload that the library reads too; none of a message that is not known, nor
/// those beyond the end of a short one.
std::vector<ReplyField> fieldsOf(std::string_view payload);

/// Bytes in hexadecimal, with blanks between them.
std::string hex(std::string_view bytes);

}  // namespace orb::ctl
