#pragma once

#include "simulator/Daemon.h"

#include <string>

namespace Tovra::Simulator
{

/**
 * Runs one command, an object with the field "command", and returns what it answers. Throws Problem
 * that names the field and what would be right, or what the daemon throws.
 */
Json RunCommand(Daemon& daemon, const Json& command);

/** A line of JSON in; a line with "ok" and, if that is false, "error" out. Throws nothing. */
std::string RunCommandLine(Daemon& daemon, const std::string& sLine);

/** "quit" is no command of the daemon's but of who reads the lines. */
bool IsQuit(const std::string& sLine);

} // namespace Tovra::Simulator
