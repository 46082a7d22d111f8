#pragma once

#include "Common/ConnMan.h"

/**
 * From what ConnMan sends to the client's lists, and what a new list means. Plain functions: no
 * bus, no lock, any thread.
 */
namespace Tovra::Lists
{

using ServiceIndex = std::map<std::string, ConnMan::NetworkService*>;

/**
 * Reads ConnMan's array of (object path, properties), in its order. An entry without properties
 * stands for the record that `mapKnown` has under its path, and is dropped if there is none. An
 * entry of any other shape is skipped after a call of `fnIncompatible`. Throws std::bad_cast if
 * `services` is no array.
 */
std::vector<ConnMan::NetworkService> ReadNetworks(const DBus::Data& services,
                                                  const ServiceIndex& mapKnown,
                                                  const std::function<void()>& fnIncompatible);

/** The same for technologies, whose properties must be there. */
std::vector<ConnMan::NetworkTechnology>
ReadTechnologies(const DBus::Data& technologies, const std::function<void()>& fnIncompatible);

/** Where a path occurs twice, the later record stands. The pointers are into the list. */
ServiceIndex MakeIndex(std::vector<ConnMan::NetworkService>& vecServices);

/** Whether a service's State is "online" or "ready". */
bool IsConnected(const ConnMan::NetworkService& service);

/** The first connected service, null if there is none; the pointer is into the list. */
const ConnMan::NetworkService*
FindConnected(const std::vector<ConnMan::NetworkService>& vecServices);

/**
 * Whether the device's usable network changed, given the first connected service (or null) of the
 * old and of the new list: it came, went, or has another IPv4 address or method.
 */
bool IsConnectionChanged(const ConnMan::NetworkService* pOld, const ConnMan::NetworkService* pNew);

} // namespace Tovra::Lists
