#pragma once

#include "simulator/Service.h"

#include <memory>

namespace Tovra::Simulator
{

/**
 * Whether ConnMan lists `first` before `second`: connected ones (the online ones first), then
 * connecting ones, then favourites, then by type, strength and name.
 */
bool ComesBefore(const Service& first, const Service& second);

/** Sorts, keeping the order of equals. Whether the order changed. */
bool Sort(std::vector<std::shared_ptr<Service>>& vecServices);

} // namespace Tovra::Simulator
