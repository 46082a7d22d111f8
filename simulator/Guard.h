#pragma once

#include <cstdio>
#include <exception>

namespace Tovra::Simulator
{

/**
 * Runs what a C callback is for. An exception must not pass through C frames: it is told on
 * standard error.
 */
template <class Function> void Guard(const Function& fn) noexcept
{
    try {
        fn();
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "simulator: %s\n", exception.what());
    }
}

} // namespace Tovra::Simulator
