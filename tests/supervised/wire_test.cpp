#include "supervised/wire.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace orb::test {
namespace {

const std::vector<Value> kEachType = {
    true, false, std::numeric_limits<long long>::min(), 0.1, std::string("a\0b", 3), std::string()};

TEST(Wire, CarriesARequest) {
  const CallRequest request = decodeRequest(encode(CallRequest{7, kEachType}));
  EXPECT_EQ(request.operation, 7U);
  EXPECT_EQ(request.arguments, kEachType);
}

TEST(Wire, CarriesAResponse) {
  const CallResponse response =
      decodeResponse(encode(CallResponse{CallResponse::Kind::LogicError, 13LL, kEachType}));
  EXPECT_EQ(response.kind, CallResponse::Kind::LogicError);
  EXPECT_EQ(response.result, Value(13LL));
  EXPECT_EQ(response.arguments, kEachType);
}

TEST(Wire, RefusesEveryMessageThatEndsEarlyOrLate) {
  const std::string whole = encode(CallRequest{7, kEachType});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_THROW(decodeRequest(whole.substr(0, size)), std::runtime_error) << size;
  }
  EXPECT_THROW(decodeRequest(whole + '\0'), std::runtime_error);
}

TEST(Wire, RefusesWhatIsOfNoKnownKind) {
  std::string bytes = encode(CallResponse{CallResponse::Kind::Returned, 0LL, {}});
  bytes[0] = 3;
  EXPECT_THROW(decodeResponse(bytes), std::runtime_error);
  bytes[0] = 0;
  bytes[1] = 4;
  EXPECT_THROW(decodeResponse(bytes), std::runtime_error);
}

}  // namespace
}  // namespace orb::test
