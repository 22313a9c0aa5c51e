#include "geometry/coordinate_writer.h"

#include <algorithm>
#include <numeric>

namespace halvern {

namespace {

auto number_of(const SurveyPoint& point) {
    return std::array{point.line, point.point, point.index};
}

}  // namespace

std::size_t PointList::Hash::operator()(const Key& key) const {
    std::uint64_t hash = 0;
    for (const int part : key) {
        hash = (hash ^ static_cast<std::uint32_t>(part)) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 32;
    }
    return static_cast<std::size_t>(hash);
}

std::uint32_t PointList::add(const SurveyPoint& point) {
    const Key key = number_of(point);
    // Traces mostly share the point of the one before, or go on to the next.
    const std::uint32_t next = last_ + 1 < points_.size() ? last_ + 1 : 0;
    if (!points_.empty() && number_of(points_[last_]) == key) {
    } else if (!points_.empty() && number_of(points_[next]) == key) {
        last_ = next;
    } else {
        const auto [place, is_new] =
            places_.try_emplace(key, static_cast<std::uint32_t>(points_.size()));
        last_ = place->second;
        if (is_new) {
            points_.push_back(point);
            is_moved_.push_back(false);
            numbered_ = numbered_ || point.point != 0;
        }
    }
    const SurveyPoint& known = points_[last_];
    if ((known.x != point.x || known.y != point.y) && !is_moved_[last_]) {
        is_moved_[last_] = true;
        ++moved_;
    }
    return last_;
}

std::vector<std::uint32_t> PointList::sorted() const {
    std::vector<std::uint32_t> order(points_.size());
    std::iota(order.begin(), order.end(), 0u);
    std::ranges::sort(order, {}, [this](std::uint32_t place) { return number_of(points_[place]); });
    return order;
}

}  // namespace halvern
