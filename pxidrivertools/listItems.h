// Adding to lists whose length is somebody else's choice.
#pragma once

#include <stdexcept>
#include <utility>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Both raise std::length_error("list too long"), with the list as it was, when it cannot hold more,
// and what its memory raises.
template <class List>
void appendItem(List& list, typename List::value_type item) {
    if (list.size() >= list.max_size())
        throw std::length_error("list too long");
    list.push_back(std::move(item));
}

// Moves all items over.
template <class List>
void appendItems(List& list, List& more) {
    if (list.max_size() - list.size() < more.size())
        throw std::length_error("list too long");
    list.splice(list.end(), more);
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
