#pragma once

#include <cstddef>
#include <span>
#include <utility>

namespace halvern::numerics {

/// Sorts `keys` ascending in place by heap sort, every companion moving with its key. Equal keys
/// end up in no particular order. Companions must be as many as the keys; with a different number
/// nothing is done and false comes back. Keys that are not numbers end up anywhere. Never worse
/// than n log n, nothing allocated. Literature: Williams, Algorithm 232, CACM 7 (1964).
template <class Key, class Companion>
bool paired_heap_sort(std::span<Key> keys, std::span<Companion> companions) {
    if (companions.size() != keys.size()) return false;
    // Lets the value at `hole` sink until no child below it, within the first `count`, is larger.
    const auto sink = [&](std::size_t hole, std::size_t count, Key key, Companion companion) {
        for (std::size_t child; (child = 2 * hole + 1) < count; hole = child) {
            if (child + 1 < count && keys[child] < keys[child + 1]) ++child;
            if (!(key < keys[child])) break;
            keys[hole] = std::move(keys[child]);
            companions[hole] = std::move(companions[child]);
        }
        keys[hole] = std::move(key);
        companions[hole] = std::move(companion);
    };
    for (std::size_t i = keys.size() / 2; i-- > 0;) {
        sink(i, keys.size(), std::move(keys[i]), std::move(companions[i]));
    }
    for (std::size_t end = keys.size(); end-- > 1;) {
        Key key = std::move(keys[end]);
        Companion companion = std::move(companions[end]);
        keys[end] = std::move(keys[0]);
        companions[end] = std::move(companions[0]);
        sink(0, end, std::move(key), std::move(companion));
    }
    return true;
}

}  // namespace halvern::numerics
