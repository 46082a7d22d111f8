#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace Tovra::Simulator
{

/** Ordered: a dictionary goes onto the wire as it was written down. */
using Json = nlohmann::ordered_json;

/** What is wrong with a scenario, a command or a value, and what would be right, in one line. */
class Problem : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace Tovra::Simulator
