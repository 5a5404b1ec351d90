// A value of any type: a tag and eight bytes. Numbers are copied; strings, arrays and objects are
// held by a reference.
//
// Whole numbers of every width, booleans and colours are kept in 64 bits, already brought into
// the range of their kind; a single is kept as a double that a single can hold. Nil is a value of
// kind Object without an object; a string may be nil as well and then reads as empty.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/objects/Object.h"
#include "host/objects/Ref.h"
#include "host/objects/String.h"
#include "host/objects/Type.h"

namespace host {

struct Array;

// Nil is allowed and ignored.
void Retain(Array* array);
void Release(Array* array) noexcept;

class Value {
  public:
    Value() : integer_(0) {}
    Value(std::int32_t value) : kind_(Kind::Integer), integer_(value) {}
    Value(std::int64_t value) : kind_(Kind::Int64), integer_(value) {}
    Value(std::uint32_t value) : kind_(Kind::UInt32), integer_(value) {}
    Value(std::uint8_t value) : kind_(Kind::UInt8), integer_(value) {}
    Value(double value) : kind_(Kind::Double), real_(value) {}
    Value(float value) : kind_(Kind::Single), real_(value) {}
    Value(bool value) : kind_(Kind::Boolean), integer_(value) {}
    Value(sdk::Color value) : kind_(Kind::Color), integer_(static_cast<std::uint32_t>(value)) {}
    // Where addresses are narrower than the rest, all eight bytes are set even so: equal references have equal bits.
    Value(Ref<String> value) : kind_(Kind::String), integer_(0) { string_ = value.Detach(); }
    Value(Ref<Array> value) : kind_(Kind::Array), integer_(0) { array_ = value.Detach(); }
    Value(Ref<Object> value) : kind_(Kind::Object), integer_(0) { object_ = value.Detach(); }
    Value(std::string_view text) : Value(MakeString(text)) {}
    Value(const std::string& text) : Value(MakeString(text)) {}
    Value(const char* text) : Value(MakeString(text)) {}
    Value(std::nullptr_t) : Value(Ref<Object>()) {}
    template <class T>
    Value(T*) = delete;  // would be taken for a boolean

    // Of a kind that is kept as a whole number, by its bits: a number in the kind's range, a colour.
    static Value OfKind(Kind kind, std::int64_t bits) {
        Value value(bits);
        value.kind_ = kind;
        return value;
    }

    Value(const Value& other) : kind_(other.kind_), integer_(other.integer_) { RetainHeld(); }
    Value(Value&& other) noexcept : kind_(other.kind_), integer_(other.integer_) { other.kind_ = Kind::None; }
    ~Value() { ReleaseHeld(); }
    Value& operator=(Value other) noexcept {
        std::swap(kind_, other.kind_);
        std::swap(integer_, other.integer_);
        return *this;
    }

    Kind kind() const { return kind_; }
    bool IsNothing() const { return kind_ == Kind::None; }
    bool IsNil() const { return kind_ == Kind::Object && !object_; }
    bool IsWhole() const { return IsWholeKind(kind_); }    // Integer, Int64 and the like
    bool IsNumber() const { return IsNumberKind(kind_); }  // whole, Double or Single

    // Numbers, booleans and colours as a number; 0 for anything else. A double is truncated and
    // saturates; not-a-number gives the most negative integer. A UInt64 gives its bits.
    std::int64_t ToInt64() const;
    std::int32_t ToInt32() const;  // whole numbers wrap, doubles saturate
    double ToDouble() const;
    bool ToBoolean() const { return ToInt64() != 0; }

    // What the value holds, borrowed; null when it holds no such thing.
    String* string() const { return kind_ == Kind::String ? string_ : nullptr; }
    Array* array() const { return kind_ == Kind::Array ? array_ : nullptr; }
    Object* object() const { return kind_ == Kind::Object ? object_ : nullptr; }

    // The eight bytes by themselves, for code that knows the kind: an interpreter's registers keep
    // theirs for life. A double's are read by real().
    std::int64_t& bits() { return integer_; }
    std::int64_t bits() const { return integer_; }
    double& real() { return real_; }
    double real() const { return real_; }

    // A string's bytes, good while the string lives.
    std::string_view text() const { return Bytes(string()); }

  private:
    // References are the last of the kinds.
    void RetainHeld() const {
        if (kind_ < Kind::String) return;
        if (kind_ == Kind::String) return Retain(string_);
        if (kind_ == Kind::Object) return Retain(object_);
        Retain(array_);
    }
    void ReleaseHeld() const {
        if (kind_ < Kind::String) return;
        if (kind_ == Kind::String) return Release(string_);
        if (kind_ == Kind::Object) return Release(object_);
        Release(array_);
    }

    Kind kind_ = Kind::None;
    union {
        std::int64_t integer_;
        double real_;
        String* string_;
        Array* array_;
        Object* object_;
    };
};

static_assert(sizeof(Value) == 16);

// A double as an integer: truncated toward zero, saturated; not-a-number is the most negative.
std::int32_t TruncateToInt32(double value);
std::int64_t TruncateToInt64(double value);

// A double as a number of a whole kind: truncated, and the nearest end of the range beyond it. Of a
// UInt64 the bits.
std::int64_t CutTo(double value, Kind whole);

// The value that a variable of a type starts with: 0, false, empty, nil; an array is empty.
Value DefaultOf(const Type& type);

// The value as a number kind (Integer … Single), by the language's implicit conversion: whole
// numbers wrap to the narrower width, doubles are truncated and saturate. Numbers only.
Value NumberAs(const Value& number, Kind kind);

// The value as a person would read it: numbers in shortest form, strings in quotes, objects by
// class. For messages, not for scripts; PlainText is the part of it that scripts see as well.
std::string Describe(const Value& value);

// A whole number, a Boolean or a colour (&cRRGGBB) as text.
std::string PlainText(const Value& value);

// The name of a value's type as a declaration would give it ("nil" for nil).
std::string TypeTextOf(const Value& value);

}  // namespace host
