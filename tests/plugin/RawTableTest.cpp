#include "tests/plugin/Host.h"
#include "tests/plugin/Insides.h"
#include "tests/plugin/PlugInLibrary.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <gtest/gtest.h>

/** The object as a host sees it that knows only the order of the slots. */

namespace Tovra
{

using TestSupport::Host;

namespace
{

enum Slot { CompleteDestructor, DeletingDestructor, Load, Set, Get };

using Operation = int (*)(ITargetSpecific*);
using Destructor = void (*)(ITargetSpecific*);
using AnySlot = void (*)();

AnySlot GetSlot(ITargetSpecific* pObject, Slot slot)
{
    return (*reinterpret_cast<AnySlot**>(pObject))[slot];
}

int Call(ITargetSpecific* pObject, Slot slot)
{
    return reinterpret_cast<Operation>(GetSlot(pObject, slot))(pObject);
}

void Destroy(ITargetSpecific* pObject, Slot slot)
{
    reinterpret_cast<Destructor>(GetSlot(pObject, slot))(pObject);
}

void AddANetwork(DeviceConfig& config)
{
    config.mapNetworkServices["OldAAAAAAAA"].sName = "Old";
}

std::size_t CountNetworks(const DeviceConfig& config)
{
    return config.mapNetworkServices.size();
}

} // namespace

TEST(RawTable, HasLoadingInSlotTwo)
{
    const TestSupport::PlugInLibrary library;
    EXPECT_EQ(Call(library.GetInterface(Host::Get().config), Load), 0);
}

TEST(RawTable, HasApplyingInSlotThreeAndReadingInSlotFour)
{
    const TestSupport::PlugInLibrary library;
    Host& host = Host::Get();
    host.Edit(AddANetwork);
    ITargetSpecific* const pObject = library.GetInterface(host.config);
    EXPECT_EQ(Call(pObject, Set), 1);
    EXPECT_EQ(host.Look(CountNetworks), 1U) << "applying has replaced the host's map";
    EXPECT_EQ(Call(pObject, Get), 1);
    EXPECT_EQ(host.Look(CountNetworks), 0U) << "reading has not replaced the host's map";
}

TEST(RawTable, IsAllThatTheObjectBeginsWithBesideItsConfiguration)
{
    TestSupport::IInsides& insides = TestSupport::LoadInsides();
    EXPECT_EQ(insides.GetSize(), 2 * sizeof(void*));
    ITargetSpecific* const pObject = insides.Make(Host::Get().config);
    EXPECT_EQ(reinterpret_cast<DeviceConfig**>(pObject)[1], &Host::Get().config);
}

TEST(RawDestructor, OfSlotZeroLeavesTheMemoryToItsOwner)
{
    TestSupport::IInsides& insides = TestSupport::LoadInsidesWithoutBus();
    alignas(std::max_align_t) std::array<unsigned char, 64> memory = {};
    ASSERT_LE(insides.GetSize(), memory.size());
    ITargetSpecific* const pObject = insides.MakeAt(memory.data(), Host::Get().config);
    Destroy(pObject, CompleteDestructor);
    EXPECT_TRUE(std::all_of(memory.begin() + 2 * sizeof(void*), memory.end(),
                            [](unsigned char nByte) { return nByte == 0; }));
}

TEST(RawDestructor, OfSlotOneIsForAnObjectOnTheHeap)
{
    TestSupport::IInsides& insides = TestSupport::LoadInsidesWithoutBus();
    ITargetSpecific* const pObject = insides.MakeToDelete(Host::Get().config);
    EXPECT_NE(GetSlot(pObject, CompleteDestructor), GetSlot(pObject, DeletingDestructor));
    Destroy(pObject, DeletingDestructor); // the sanitizers see what is wrong with it
}

} // namespace Tovra
