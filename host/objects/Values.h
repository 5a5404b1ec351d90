// A row of values that grows and shrinks at both ends: what an array holds.
//
// The values lie one behind the other, with room behind them as in a std::vector, and, once
// something was put or taken there, with room in front as well. So a queue (append here, remove
// there) takes constant time a step; in the middle the shorter side moves.
#pragma once

#include <vector>

#include "host/objects/Value.h"

namespace host {

class Values {
  public:
    std::size_t size() const { return cells_.size() - front_; }
    bool empty() const { return size() == 0; }
    Value* begin() { return cells_.data() + front_; }
    Value* end() { return cells_.data() + cells_.size(); }
    const Value* begin() const { return cells_.data() + front_; }
    const Value* end() const { return cells_.data() + cells_.size(); }
    Value& operator[](std::size_t index) { return begin()[index]; }
    const Value& operator[](std::size_t index) const { return begin()[index]; }
    Value& back() { return cells_.back(); }

    std::size_t capacity() const { return cells_.capacity() - front_; }
    void reserve(std::size_t count) { cells_.reserve(front_ + count); }
    void push_back(Value value) { cells_.push_back(std::move(value)); }
    void pop_back() { cells_.pop_back(); }
    void resize(std::size_t count, const Value& first) { cells_.resize(front_ + count, first); }
    void assign(std::size_t count, const Value& first) {
        cells_.assign(count, first);
        front_ = 0;
    }
    template <class Iterator>
    void assign(Iterator first, Iterator last) {
        cells_.assign(first, last);
        front_ = 0;
    }

    // Both move the values on the shorter side of the place, of which there are `index` before it.
    void Insert(std::size_t index, Value value);
    void Erase(std::size_t index);

  private:
    void MakeRoomInFront();
    void DropRoomInFront();

    std::vector<Value> cells_;  // the first `front_` of them are room
    std::size_t front_ = 0;
};

}  // namespace host
