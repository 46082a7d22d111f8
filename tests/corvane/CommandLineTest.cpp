#include "tests/corvane/Scene.h"

namespace Tovra
{

namespace
{

using testing::HasSubstr;
using testing::StartsWith;

class CommandLine : public Scene
{
protected:
    /** One line that says what is wrong, status 2, and nothing loaded or sent. */
    static void ExpectRefused(std::vector<std::string> vecArguments, const std::string& sReason)
    {
        const Outcome outcome = Run(std::move(vecArguments));
        EXPECT_EQ(outcome.nExit, 2) << outcome;
        EXPECT_EQ(outcome.sOutput, "");
        EXPECT_THAT(outcome.sErrors, StartsWith("corvane: "));
        EXPECT_THAT(outcome.sErrors, HasSubstr(sReason));
        EXPECT_EQ(outcome.sErrors.find('\n') + 1, outcome.sErrors.size()) << outcome;
    }
};

TEST_F(CommandLine, WhatMakesNoSenseIsRefusedInOneLine)
{
    ExpectRefused({}, "no command; see --help");
    ExpectRefused({"conect", "Home"}, "conect");
    ExpectRefused({"show"}, "NETWORK is required");
    ExpectRefused({"show", "a", "b"}, "b");
    ExpectRefused({"networks", "--fast"}, "--fast");
    ExpectRefused({"networks", "--wait", "-1"}, "--wait");
    ExpectRefused({"networks", "--wait", "soon"}, "--wait");
    ExpectRefused({"--log", "4", "networks"}, "--log");
    ExpectRefused({"power", "wifi"}, "STATE is required");
    ExpectRefused({"power", "wifi", "maybe"}, "maybe");
    ExpectRefused({"connect", "a", "--wps", "--passphrase-file", "b"}, "--wps");
}

TEST_F(CommandLine, ASettingIsAllOfAnAddressOrDhcp)
{
    ExpectRefused({"set", "a"}, "set needs --dhcp, or --address with --netmask and --gateway");
    ExpectRefused({"set", "a", "--address", "10.0.0.2"}, "--address requires --");
    ExpectRefused({"set", "a", "--netmask", "255.0.0.0"}, "--netmask requires --address");
    ExpectRefused({"set", "a", "--nameserver", "9.9.9.9"}, "--nameserver requires --address");
    ExpectRefused({"set", "a", "--dhcp", "--gateway", "10.0.0.1"}, "--dhcp");
}

TEST_F(CommandLine, ARefusalIsJsonToo)
{
    const Json refusal = RunForJson({"power", "wifi", "maybe"}, 2);
    EXPECT_EQ(refusal.at("result"), "error");
    EXPECT_THAT(refusal.at("text").get<std::string>(), HasSubstr("maybe"));
}

TEST_F(CommandLine, HelpTellsOfEveryCommand)
{
    const Outcome help = Run({"--help"});
    EXPECT_EQ(help.nExit, 0);
    for (const char* pCommand : {"technologies", "networks", "show", "scan", "connect",
                                 "disconnect", "set", "power", "watch", "shell"}) {
        EXPECT_THAT(help.sOutput, HasSubstr(std::string("\n  ") + pCommand));
        const Outcome outcome = Run({pCommand, "--help"});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_THAT(outcome.sOutput, HasSubstr(std::string("corvane ") + pCommand));
    }
}

TEST_F(CommandLine, ItHasAVersion)
{
    const Outcome outcome = Run({"--version"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_THAT(outcome.sOutput, StartsWith("corvane 0."));
}

} // namespace

} // namespace Tovra
