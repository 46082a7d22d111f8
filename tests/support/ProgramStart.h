#pragma once

#include <map>
#include <string>
#include <vector>

/** What an exec takes, made before the fork: after it nothing may allocate. Any thread. */
namespace Tovra::TestSupport
{

/** Pointers into the texts, which must outlive them, and the null that ends the list. */
std::vector<char*> Pointers(std::vector<std::string>& vecTexts);

/** The process's own environment, with some variables in the place of those of the same name. */
std::vector<std::string> MakeEnvironment(const std::map<std::string, std::string>& mapChanges);

} // namespace Tovra::TestSupport
