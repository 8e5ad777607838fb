// What supervised calls and their worker say to each other: any bytes are refused, or mean the same
// after another trip. Input: whether a request or a response, then the frame.

#include <stdexcept>
#include <string>

#include "supervised/wire.h"
#include "support/check.h"
#include "support/input.h"

namespace orb::test {
namespace {

/// Compared as bytes: a number that is none does not equal itself.
template <typename Message>
void checkRoundTrip(std::string_view bytes, Message (*decode)(std::string_view)) {
  Message message;
  try {
    message = decode(bytes);
  } catch (const std::runtime_error&) {
    return;
  }
  const std::string again = encode(message);
  check(again.size() == bytes.size(), "each byte of a frame means something");
  check(encode(decode(again)) == again, "a frame means what was put into it");
}

}  // namespace

void tryInput(Input input) {
  if (input.byte() % 2 == 0) {
    checkRoundTrip(input.restAsText(), decodeRequest);
  } else {
    checkRoundTrip(input.restAsText(), decodeResponse);
  }
}

}  // namespace orb::test
