#pragma once

#include "simulator/Scenario.h"

namespace Tovra::Simulator
{

/** Puts the values in place of the usual ones, and leaves out what has none. */
void Apply(const Overrides& overrides, Properties& properties);

/**
 * What a change is announced with: each property that is new or differs, in order, and for each
 * that is gone its empty value, as ConnMan does.
 */
Properties Compare(const Properties& before, const Properties& after);

} // namespace Tovra::Simulator
