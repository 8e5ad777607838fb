#pragma once

#include <string>

#include "orb-platform/export.h"

/// One record of a module's EEPROM: a type and the content as text. Any thread may read it.
class ORB_PLATFORM_EXPORT Record {
 public:
  /// Type 0 says that the record does not exist; a plain text has type 1.
  Record(int type, std::string data);
  ~Record();

  Record(const Record&) = default;             ///< a copy
  Record(Record&&) = default;                  ///< moves
  Record& operator=(const Record&) = default;  ///< copies
  Record& operator=(Record&&) = default;       ///< moves

  /// 0: there is no such record.
  int GetRecordType() const;

  /// The record's content; empty when there is no such record.
  std::string GetRecordData() const;

 private:
  [[maybe_unused]] int type_ = 0;
  [[maybe_unused]] std::string data_;
};
