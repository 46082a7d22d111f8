#pragma once

#include "simulator/Service.h"

#include <istream>
#include <string>

namespace Tovra::Simulator
{

/** What ConnMan writes into a saved service's "settings". */
std::string MakeSettings(const Service& service);

/** Makes the service what the lines of "settings" say. */
void ReadSettings(std::istream& settings, Service& service);

/** The storage directory: one directory a saved service, named as its path ends. */
class Storage
{
public:
    /** An empty directory name: nothing is kept. */
    explicit Storage(std::string sDirectory) : sRoot(std::move(sDirectory)) {}

    /** Errors of the file system are thrown as std::filesystem::filesystem_error. */
    void Save(const Service& service) const;

    /** Makes the service what its settings say; false, and nothing, if it has none. */
    bool Load(Service& service) const;

    bool IsKept() const { return !sRoot.empty(); }

    /** For a service that is none of the saved ones any more: as ConnMan, keeps its directory. */
    void Forget(const Service& service) const;

private:
    std::string sRoot;
};

} // namespace Tovra::Simulator
