#include "Include/D-Bus.h"
#include "tests/support/DataText.h"
#include "tests/support/PeerTest.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <unistd.h>

namespace Tovra::DBus
{

using TestSupport::Describe;

class DataReading : public TestSupport::PeerTest
{
protected:
    /** Reads as `Read` does and checks what was written to standard error meanwhile. */
    Message ReceiveWarned(const TestSupport::SdBusPeer::Fill& fnFill, const std::string& sWarning)
    {
        testing::internal::CaptureStderr();
        const Message message = Receive(fnFill);
        vecRead = message.Contents(0);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), sWarning);
        return message;
    }

    std::vector<Data> vecRead;
};

template <class... Args> auto Append(const char* pTypes, Args... args)
{
    return
        [=](sd_bus_message* pMessage) { return sd_bus_message_append(pMessage, pTypes, args...); };
}

/** The first complete type of a row of codes, its open brackets closed. */
std::string Complete(const std::string& sTypes)
{
    const std::string sType = sTypes.substr(0, sTypes.find('v') + 1);
    const std::string& sOpen = sType.empty() ? sTypes : sType;
    const auto nBrackets = std::count(sOpen.begin(), sOpen.end(), '(');
    return sOpen + std::string(static_cast<std::size_t>(nBrackets), ')');
}

/** Containers in each other, one for each code but the last: 'v', 'a' or '('. */
TestSupport::SdBusPeer::Fill Nest(const std::string& sTypes,
                                  const TestSupport::SdBusPeer::Fill& fnFill)
{
    return [=](sd_bus_message* pMessage) {
        for (std::size_t nLevel = 0; nLevel + 1 < sTypes.size(); ++nLevel) {
            const char nCode = sTypes[nLevel] == '(' ? char{SD_BUS_TYPE_STRUCT} : sTypes[nLevel];
            const std::string sContents = Complete(sTypes.substr(nLevel + 1));
            if (sd_bus_message_open_container(pMessage, nCode, sContents.c_str()) < 0)
                return -1;
        }
        int nResult = fnFill(pMessage);
        for (std::size_t nLevel = 1; nLevel < sTypes.size() && nResult >= 0; ++nLevel)
            nResult = sd_bus_message_close_container(pMessage);
        return nResult;
    };
}

TEST_F(DataReading, AByteReadsAsAnUnsignedNumber)
{
    EXPECT_EQ(Describe(Read(Append("y", 200))), "UInt32 200");
}

TEST_F(DataReading, A16BitUnsignedNumberReadsAsAnUnsignedNumber)
{
    EXPECT_EQ(Describe(Read(Append("q", 0xFFFE))), "UInt32 65534");
}

TEST_F(DataReading, A32BitUnsignedNumberIsReadInFull)
{
    EXPECT_EQ(Describe(Read(Append("u", 0xFFFFFFFEu))), "UInt32 4294967294");
}

TEST_F(DataReading, BooleansAreRead)
{
    EXPECT_EQ(Describe(Receive(Append("bb", 1, 0)).Contents(0)), "Bool true\nBool false\n");
}

TEST_F(DataReading, TextsAndObjectPathsAreReadWholeAndKeptApart)
{
    EXPECT_EQ(Describe(Receive(Append("sso", "caf\xC3\xA9", "", "/a/b")).Contents(0)),
              "String \"caf\\xC3\\xA9\"\nString \"\"\nObjectPath \"/a/b\"\n");
}

TEST_F(DataReading, AMessageWithoutArgumentsReadsAsEmpty)
{
    EXPECT_EQ(Describe(Read(Append(""))), "Empty");
}

TEST_F(DataReading, AnEmptyArrayOfStringsReadsAsEmpty)
{
    EXPECT_EQ(Describe(Read(Append("as", 0))), "Empty");
}

TEST_F(DataReading, AnEmptyDictionaryReadsAsEmptyAndIsNoMap)
{
    Data data = Read(Append("a{sv}", 0));
    EXPECT_EQ(Describe(data), "Empty");
    EXPECT_THROW((data.As<std::map<std::string, Data>>()), std::bad_cast);
}

TEST_F(DataReading, AVariantAroundAnEmptyArrayReadsAsEmptyWithTheMark)
{
    EXPECT_EQ(Describe(Read(Append("v", "as", 0))), "<Empty>");
}

TEST_F(DataReading, AVariantReadsAsItsContentsWithTheMark)
{
    EXPECT_EQ(Describe(Read(Append("v", "s", "text"))), "<String \"text\">");
}

TEST_F(DataReading, AVariantThatWasReadIsWrittenAsAVariantAgain)
{
    EXPECT_EQ(Arrived(Read(Append("v", "s", "text"))), "v <s\"text\">");
}

TEST_F(DataReading, VariantsInsideVariantsCollapseToOne)
{
    const Data data = Read(Append("v", "v", "v", "u", 7));
    EXPECT_EQ(Describe(data), "<UInt32 7>");
    EXPECT_EQ(Arrived(data), "v <u7>");
}

TEST_F(DataReading, OnlyWhatCameOutOfAVariantBearsTheMark)
{
    EXPECT_EQ(Describe(Receive(Append("vsas", "s", "a", "b", 1, "c")).Contents(0)),
              "<String \"a\">\nString \"b\"\nArray of String [String \"c\"]\n");
}

TEST_F(DataReading, AnArrayHasTheTypeOfItsFirstElement)
{
    EXPECT_EQ(Describe(Read(Append("as", 2, "a", "b"))),
              "Array of String [String \"a\", String \"b\"]");
}

TEST_F(DataReading, AnArrayOfVariantsHasTheTypeInsideTheFirst)
{
    EXPECT_EQ(Describe(Read(Append("av", 2, "b", 1, "s", "x"))),
              "Array of Bool [<Bool true>, <String \"x\">]");
}

TEST_F(DataReading, AnArrayOfBytesIsAnArrayOfNumbers)
{
    EXPECT_EQ(Describe(Read(Append("ay", 2, 1, 255))), "Array of UInt32 [UInt32 1, UInt32 255]");
}

TEST_F(DataReading, ArraysInsideAnArrayAreReadAndTheEmptyOnesAreEmpty)
{
    EXPECT_EQ(Describe(Read(Append("aas", 2, 0, 1, "x"))),
              "Array of Empty [Empty, Array of String [String \"x\"]]");
}

TEST_F(DataReading, AStructReadsAsAnArrayOfItsMembers)
{
    EXPECT_EQ(Describe(Read(Append("(oa{sv})", "/service", 1, "State", "s", "idle"))),
              "Array of ObjectPath [ObjectPath \"/service\", "
              "Dictionary of String {\"State\": <String \"idle\">}]");
}

TEST_F(DataReading, AnArrayOfStructsIsAnArrayOfArrays)
{
    EXPECT_EQ(Describe(Read(Append("a(oa{sv})", 2, "/a", 0, "/b", 1, "K", "b", 0))),
              "Array of Array [Array of ObjectPath [ObjectPath \"/a\", Empty], "
              "Array of ObjectPath [ObjectPath \"/b\", Dictionary of Bool {\"K\": <Bool false>}]]");
}

TEST_F(DataReading, ADictionaryHasTheTypeInsideTheVariantUnderItsSmallestKey)
{
    EXPECT_EQ(Describe(Read(Append("a{sv}", 2, "B", "s", "text", "A", "b", 1))),
              "Dictionary of Bool {\"A\": <Bool true>, \"B\": <String \"text\">}");
}

TEST_F(DataReading, KeysAreComparedByteByByte)
{
    EXPECT_EQ(Describe(Read(Append("a{sv}", 2, "\xC3\xA9", "s", "x", "z", "u", 1))),
              "Dictionary of UInt32 {\"z\": <UInt32 1>, \"\\xC3\\xA9\": <String \"x\">}");
}

TEST_F(DataReading, ADictionaryThatWasReadCannotBeWrittenAsItIs)
{
    ExpectRefused(Read(Append("a{sv}", 2, "A", "b", 1, "B", "s", "text")));
}

TEST_F(DataReading, ADictionaryOfStringsIsRead)
{
    EXPECT_EQ(Describe(Read(Append("a{ss}", 2, "k", "v", "", ""))),
              "Dictionary of String {\"\": String \"\", \"k\": String \"v\"}");
}

TEST_F(DataReading, ARepeatedKeyKeepsItsLastValue)
{
    EXPECT_EQ(Describe(Read(Append("a{sv}", 3, "K", "s", "first", "L", "b", 1, "K", "u", 2))),
              "Dictionary of UInt32 {\"K\": <UInt32 2>, \"L\": <Bool true>}");
}

TEST_F(DataReading, ADictionaryWithNumbersForKeysHasNoEntries)
{
    Data data = Read(Append("a{uv}", 2, 1, "s", "x", 2, "s", "y"));
    EXPECT_EQ(data.GetType(), Data::Dictionary);
    EXPECT_TRUE((data.As<std::map<std::string, Data>>().empty()));
}

TEST_F(DataReading, ADictionaryWithObjectPathsForKeysHasNoEntries)
{
    Data data = Read(Append("a{os}", 1, "/a", "x"));
    EXPECT_EQ(data.GetType(), Data::Dictionary);
    EXPECT_TRUE((data.As<std::map<std::string, Data>>().empty()));
}

TEST_F(DataReading, DictionariesInsideDictionariesAreRead)
{
    EXPECT_EQ(Describe(Read(Append("a{sv}", 1, "IPv4", "a{sv}", 1, "Method", "s", "dhcp"))),
              "Dictionary of Dictionary "
              "{\"IPv4\": <Dictionary of String {\"Method\": <String \"dhcp\">}>}");
}

TEST_F(DataReading, ReadingLeavesTheMessageToBeReadAgain)
{
    const Message message = Receive(Append("su", "a", 1));
    EXPECT_EQ(Describe(message.Contents()), "String \"a\"");
    EXPECT_EQ(Describe(message.Contents()), "String \"a\"");
    EXPECT_EQ(Describe(message.Contents(0)), "String \"a\"\nUInt32 1\n");
}

TEST_F(DataReading, ASignedNumberReadsAsInvalidWithOneWarning)
{
    ReceiveWarned(Append("i", -1), "Warning, unimplemented type i\n");
    EXPECT_EQ(Describe(vecRead), "Invalid\n");
}

TEST_F(DataReading, EachTypeThatIsNotCarriedIsNamedInItsWarning)
{
    ReceiveWarned(Append("nxtdgh", 1, std::int64_t{1}, std::uint64_t{1}, 1.0, "s", STDIN_FILENO),
                  "Warning, unimplemented type n\n"
                  "Warning, unimplemented type x\n"
                  "Warning, unimplemented type t\n"
                  "Warning, unimplemented type d\n"
                  "Warning, unimplemented type g\n"
                  "Warning, unimplemented type h\n");
    EXPECT_EQ(vecRead.size(), 6u);
    for (const Data& data : vecRead)
        EXPECT_EQ(Describe(data), "Invalid");
}

TEST_F(DataReading, ReadingGoesOnAfterATypeThatIsNotCarried)
{
    ReceiveWarned(Append("isv(bxs)a{sv}", 1, "a", "i", 2, 1, std::int64_t{3}, "b", 2, "A", "d", 1.0,
                         "B", "s", "c"),
                  "Warning, unimplemented type i\n"
                  "Warning, unimplemented type i\n"
                  "Warning, unimplemented type x\n"
                  "Warning, unimplemented type d\n");
    EXPECT_EQ(Describe(vecRead),
              "Invalid\n"
              "String \"a\"\n"
              "<Invalid>\n"
              "Array of Bool [Bool true, Invalid, String \"b\"]\n"
              "Dictionary of Invalid {\"A\": <Invalid>, \"B\": <String \"c\">}\n");
}

TEST_F(DataReading, EachElementThatIsNotCarriedIsWarnedOf)
{
    ReceiveWarned(Append("ai", 3, 1, 2, 3), "Warning, unimplemented type i\n"
                                            "Warning, unimplemented type i\n"
                                            "Warning, unimplemented type i\n");
    EXPECT_EQ(Describe(vecRead), "Array of Invalid [Invalid, Invalid, Invalid]\n");
}

TEST_F(DataReading, NothingIsWarnedOfForWhatIsCarried)
{
    ReceiveWarned(
        Append("yqubsovas(s)a{uv}", 1, 2, 3, 1, "s", "/o", "s", "v", 0, "m", 1, 1, "s", ""), "");
    EXPECT_EQ(vecRead.size(), 10u);
}

// libdbus accepts 64 levels, and no more than 32 of arrays and 32 of structs.
// Each byte would take a value of 64: a message that fills the bus would fill a device's memory.
TEST_F(DataReading, UpToAMillionValuesAreRead)
{
    const auto fnFill = [](std::size_t nElements) {
        return [=](sd_bus_message* pMessage) {
            const std::vector<std::uint8_t> vecBytes(nElements, 7);
            return sd_bus_message_append_array(pMessage, 'y', vecBytes.data(), vecBytes.size());
        };
    };
    constexpr std::size_t nMost = 999999; // and the array itself
    const Data read = Receive(fnFill(nMost)).Contents();
    EXPECT_EQ(read.As<std::vector<Data>>().size(), nMost);
    EXPECT_EQ(read.As<std::vector<Data>>().back().As<std::uint32_t>(), 7U);
    EXPECT_THROW(Receive(fnFill(nMost + 1)).Contents(), std::bad_alloc);
}

TEST_F(DataReading, MoreThanAMillionValuesAreNotReadHoweverTheyAreSpread)
{
    const auto fnFill = [](sd_bus_message* pMessage) {
        const std::vector<std::uint8_t> vecBytes(1000, 7);
        int nResult = sd_bus_message_open_container(pMessage, SD_BUS_TYPE_ARRAY, "ay");
        for (int n = 0; n < 1000 && nResult >= 0; ++n)
            nResult = sd_bus_message_append_array(pMessage, 'y', vecBytes.data(), vecBytes.size());
        return nResult < 0 ? nResult : sd_bus_message_close_container(pMessage);
    };
    const Message message = Receive(fnFill);
    EXPECT_THROW(message.Contents(2), std::bad_alloc);
}

TEST_F(DataReading, TheDeepestVariantsThatABusDeliversAreRead)
{
    const std::string sVariants(64, 'v');
    EXPECT_EQ(Describe(Read(Nest(sVariants + "u", Append("u", 64)))), "<UInt32 64>");
}

TEST_F(DataReading, TheDeepestArraysAndStructsThatABusDeliversAreRead)
{
    const std::string sTypes = std::string(32, 'a') + std::string(32, '(') + "s";
    Data data = Read(Nest(sTypes, Append("s", "deep")));
    for (int nLevel = 1; nLevel <= 64; ++nLevel) {
        ASSERT_EQ(data.GetType(), Data::Array) << nLevel;
        data = std::move(data.As<std::vector<Data>>()[0]);
    }
    EXPECT_EQ(Describe(data), "String \"deep\"");
}

} // namespace Tovra::DBus
