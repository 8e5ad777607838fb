#include "orb-platform/record.h"

#include <utility>

Record::Record(int type, std::string data) : type_(type), data_(std::move(data)) {}

Record::~Record() = default;

int Record::GetRecordType() const { return type_; }

std::string Record::GetRecordData() const { return data_; }
