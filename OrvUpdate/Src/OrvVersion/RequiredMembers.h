// What all readers of documents ask first.
#pragma once

#include <algorithm>
#include <initializer_list>

#include "Public/Base/ErrorInfo.h"
#include "Public/Base/JsonValue.h"

namespace Tarnwick::OrvUpdate {

inline bool hasMembers(const Public::Base::JsonValue& value, std::initializer_list<const char*> keys) {
    return std::all_of(keys.begin(), keys.end(), [&](const char* key) { return value.isMember(key); });
}

inline Public::Base::ErrorInfo badDocument() { return {Public::Base::ErrorCode_BadDocument, ""}; }

}  // namespace Tarnwick::OrvUpdate
