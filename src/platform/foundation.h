// Conversions between Foundation objects and plain C++ values, and the
// Foundation calls the library makes often enough to name.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/objc.h"
#include "platform/value.h"

namespace kv::platform {

using UInteger = unsigned long;  // NSUInteger
using Integer = long;            // NSInteger

// Returns a new autoreleased NSString holding `s` (UTF-8).
id makeString(std::string_view s);

// Returns the UTF-8 contents of an NSString, or nullopt for nil or a non-string.
std::optional<std::string> stringOf(id obj);

// Returns the UTF-8 contents of an NSString without copying them, or nullopt
// for nil or a non-string; valid while the string and the current autorelease
// pool live. For a question asked on every call, where a copy would cost more
// than the answer.
std::optional<std::string_view> utf8Of(id obj);

// Returns the UTF-8 contents of an NSString, or "" for nil or a non-string.
std::string toString(id obj);

// Returns the integer value of an NSNumber (booleans count as 0/1), or nullopt.
std::optional<int64_t> integerOf(id obj);

// Returns the value of an NSNumber as a double, or nullopt.
std::optional<double> realOf(id obj);

// Returns the value of an NSNumber holding a boolean, or nullopt for anything
// else (a number that is not a boolean, a string, nil).
std::optional<bool> boolOf(id obj);

// Returns the strings of an NSArray whose every element is an NSString, or
// nullopt (nil, not an array, or any element of another kind).
std::optional<std::vector<std::string>> stringListOf(id obj);

// Returns autoreleased NSNumbers / NSArray of NSStrings. makeInt is a number
// made from an int, as a reply that carries a count has it.
id makeBool(bool b);
id makeInt(int i);
id makeInteger(int64_t i);
id makeReal(double d);
id makeStringList(const std::vector<std::string>& items);

// Returns an autoreleased NSArray of `items`, in order; nil entries are left out.
id makeArray(std::initializer_list<id> items);

// Returns an autoreleased NSDictionary of the given entries; nil values are
// left out.
id makeDictionary(std::initializer_list<std::pair<const char*, id>> entries);

// Converts any property-list object (string, number, boolean, data, date,
// array, dictionary with string keys) into a Value; other objects and
// non-string dictionary keys are dropped (a none value), nesting is capped.
Value valueOf(id obj);

// Builds the autoreleased Foundation object for a Value (nil for a none value).
id makeObject(const Value& value);

// Returns `[obj valueForKey:key]`, or nil when `obj` is nil or does not
// answer valueForKey:.
id valueForKey(id obj, const char* key);

// Returns `[obj valueForKey:key]` only when key-value coding can find the
// key (a getter key, getKey, isKey or _key, or an instance variable _key,
// _isKey, key or isKey); nil otherwise, where Foundation would raise.
id valueForKeyIfPresent(id obj, const char* key);

// Returns `[dict objectForKey:key]` for an NSDictionary, else nil.
id objectForKey(id dict, const char* key);

// Returns the number of elements of an NSArray, else 0.
UInteger arrayCount(id array);

// Returns element `i` of an NSArray, or nil when out of range or not an array.
id arrayObjectAt(id array, UInteger i);

// An autorelease pool for one scope.
class AutoreleasePool {
 public:
  AutoreleasePool();
  ~AutoreleasePool();
  AutoreleasePool(const AutoreleasePool&) = delete;
  AutoreleasePool& operator=(const AutoreleasePool&) = delete;

 private:
  id pool_;
};

}  // namespace kv::platform
