#include "trace/utc_time.h"

#include <charconv>
#include <cmath>
#include <ctime>
#include <string_view>

#include "model/nmea_format.h"

namespace orb::sim {

using std::chrono::microseconds;
using std::chrono::seconds;

WallTime wallTimeNow() {
  return std::chrono::floor<microseconds>(std::chrono::system_clock::now());
}

std::string utcText(WallTime time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss hours(time - day);
  return format("%04d-%02u-%02uT%02d:%02d:%02d.%06dZ", static_cast<int>(date.year()),
                static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
                static_cast<int>(hours.hours().count()), static_cast<int>(hours.minutes().count()),
                static_cast<int>(hours.seconds().count()),
                static_cast<int>(hours.subseconds().count()));
}

std::optional<WallTime> parseUtc(const std::string& text) {
  std::tm parts{};
  const char* const end = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  if (end == nullptr) {
    return std::nullopt;
  }
  double fraction = 0;
  const char* const textEnd = text.data() + text.size();
  const auto [last, error] = *end == '.'
                                 ? std::from_chars(end, textEnd, fraction, std::chars_format::fixed)
                                 : std::from_chars_result{end, std::errc()};
  if (error != std::errc() || std::string_view(last) != "Z") {
    return std::nullopt;
  }
  return WallTime(seconds(timegm(&parts))) + microseconds(std::llround(fraction * 1e6));
}

}  // namespace orb::sim
