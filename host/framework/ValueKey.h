// Values as keys of a table.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "host/objects/Value.h"

namespace host {

// Two values are the same key when this is the same. Numbers by what they are worth, whatever their
// type; texts without regard to case and encoding; strings of bytes byte by byte, and never the
// same as a text; booleans and colours by themselves; objects and arrays by identity; Nil is a key.
std::string KeyOf(const Value& value);

// A table from keys to places in a list.
class KeyPlaces {
  public:
    static constexpr std::size_t kNone = SIZE_MAX;

    std::size_t Find(const Value& key) const;  // kNone for a key that isn't there
    void Set(const Value& key, std::size_t place);
    void Erase(const Value& key);
    void clear();
    std::size_t size() const { return wholes_.size() + others_.size(); }

  private:
    struct Mixed {
        std::size_t operator()(std::int64_t number) const;
    };

    // Whole numbers need no text: they are found by themselves.
    std::unordered_map<std::int64_t, std::size_t, Mixed> wholes_;
    std::unordered_map<std::string, std::size_t> others_;
};

}  // namespace host
