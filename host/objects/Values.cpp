// Room made at the front, and elements moved to the nearer end.
#include "host/objects/Values.h"

#include <algorithm>

namespace host {

namespace {

auto At(std::vector<Value>& cells, std::size_t index) { return cells.begin() + static_cast<std::ptrdiff_t>(index); }

}  // namespace

// As much again, so that the next ones are cheap.
void Values::MakeRoomInFront() {
    const std::size_t room = std::max<std::size_t>(size(), 8);
    cells_.insert(cells_.begin(), room, Value());
    front_ = room;
}

// Room that has become more than what is held goes.
void Values::DropRoomInFront() {
    if (front_ < 16 || front_ <= size()) return;
    cells_.erase(cells_.begin(), At(cells_, front_));
    front_ = 0;
}

void Values::Insert(std::size_t index, Value value) {
    if (index >= size() / 2) {
        cells_.insert(At(cells_, front_ + index), std::move(value));
        return;
    }
    if (front_ == 0) MakeRoomInFront();
    std::move(At(cells_, front_), At(cells_, front_ + index), At(cells_, front_ - 1));
    --front_;
    begin()[index] = std::move(value);
}

void Values::Erase(std::size_t index) {
    if (index >= size() / 2) {
        cells_.erase(At(cells_, front_ + index));
        return;
    }
    std::move_backward(At(cells_, front_), At(cells_, front_ + index), At(cells_, front_ + index + 1));
    cells_[front_++] = Value();
    DropRoomInFront();
}

}  // namespace host
