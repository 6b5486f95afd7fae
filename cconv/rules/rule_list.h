// The list type of the rule model: it holds at most 65,535 items, because its
// count is part of the model and has 16 bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "cconv/limits.h"

namespace ksv {

template <typename Item>
class RuleList {
 public:
  // Returns the new count, or 0 when the list is full and stays as it was.
  uint16_t append(Item item) {
    if (items_.size() >= limits::kMostItems) return 0;
    items_.push_back(std::move(item));
    return count();
  }

  // Behind this, appending up to so many needs no memory.
  void reserve(size_t items) { items_.reserve(items); }

  uint16_t count() const { return static_cast<uint16_t>(items_.size()); }
  bool empty() const { return items_.empty(); }
  const Item& operator[](size_t index) const { return items_[index]; }
  Item& operator[](size_t index) { return items_[index]; }
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }
  auto begin() { return items_.begin(); }
  auto end() { return items_.end(); }

 private:
  std::vector<Item> items_;
};

}  // namespace ksv
