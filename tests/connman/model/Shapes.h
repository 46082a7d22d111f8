#pragma once

#include "tests/connman/model/Look.h"

namespace Tovra::ConnManModel
{

/**
 * What a daemon of another version, or a broken one, may send, beside rare but sound forms. Each
 * function has a number of shapes to choose from; any number stands for one of them.
 */

/** An entry of the list of services, or of technologies. */
TestSupport::WireValue ServiceShape(unsigned nShape, const std::string& sPath, const Look& look);
TestSupport::WireValue TechnologyShape(unsigned nShape, const std::string& sPath, const Look& look);

/** The arguments where a list is due. */
std::vector<TestSupport::WireValue> ListShape(unsigned nShape,
                                              std::vector<TestSupport::WireValue> vecEntries);

/** The arguments of a service's "PropertyChanged". */
std::vector<TestSupport::WireValue> PropertyShape(unsigned nShape);

/** An entry as it ought to be. */
TestSupport::WireValue MakeEntry(const std::string& sPath, TestSupport::WireProperties properties);

/** A list of entries; where these are of several types, each travels in a variant. */
TestSupport::WireValue MakeList(std::vector<TestSupport::WireValue> vecEntries);

} // namespace Tovra::ConnManModel
