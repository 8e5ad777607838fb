#pragma once

#include <ios>
#include <ostream>
#include <sstream>
#include <string>

namespace orb::test {

/// While it exists, what goes to a stream ends here, and flushes are counted. The stream's buffer,
/// fill character and format are put back afterwards.
class CapturedStream {
 public:
  explicit CapturedStream(std::ostream& stream) : stream_(stream), previous_(&buffer_) {
    previous_ = stream.rdbuf(&buffer_);
    format_.copyfmt(stream);
  }
  CapturedStream(const CapturedStream&) = delete;
  CapturedStream& operator=(const CapturedStream&) = delete;
  ~CapturedStream() {
    stream_.copyfmt(format_);
    stream_.rdbuf(previous_);
  }

  std::string text() const { return buffer_.str(); }
  int flushes() const { return buffer_.flushes; }
  /// What had been written when the stream was flushed last.
  const std::string& flushedText() const { return buffer_.flushed; }

 private:
  struct Buffer : std::stringbuf {
    int sync() override {
      ++flushes;
      flushed = str();
      return 0;
    }
    int flushes = 0;
    std::string flushed;
  };

  std::ostream& stream_;
  Buffer buffer_;
  std::streambuf* previous_;
  std::ios format_{nullptr};
};

}  // namespace orb::test
