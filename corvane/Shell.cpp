#include "corvane/Shell.h"

#include "corvane/Commands.h"
#include "corvane/Result.h"
#include "corvane/Terminal.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <editline/readline.h>
#include <fmt/format.h>
#include <unistd.h>

namespace Tovra::Corvane
{

namespace
{

// readline's callbacks take no argument of ours.
Host* pCompletionHost = nullptr;
std::optional<std::string> sEntered;
bool bEnded = false;

std::vector<std::string> GetCandidates(bool bFirstWord)
{
    if (bFirstWord)
        return GetCommandNames();
    std::vector<std::string> vecNames;
    for (const auto& [sKey, service] : pCompletionHost->Look().mapServices)
        vecNames.push_back(service.sName.find(' ') == std::string::npos ? service.sName : sKey);
    for (const auto& [sType, technology] : pCompletionHost->Look().mapTechnologies)
        vecNames.push_back(sType);
    return vecNames;
}

char* NextCandidate(const char* pBeginning, int nState)
{
    static std::vector<std::string> vecCandidates;
    static std::size_t nNext = 0;
    if (nState == 0) {
        const std::string sBefore(rl_line_buffer, static_cast<std::size_t>(rl_point));
        const bool bFirstWord = sBefore.find(' ') == std::string::npos;
        vecCandidates = GetCandidates(bFirstWord);
        nNext = 0;
    }
    while (nNext < vecCandidates.size()) {
        const std::string& sCandidate = vecCandidates[nNext++];
        if (sCandidate.compare(0, std::strlen(pBeginning), pBeginning) == 0)
            return strdup(sCandidate.c_str());
    }
    return nullptr;
}

char** Complete(const char* pBeginning, int, int)
{
    rl_attempted_completion_over = 1;
    return rl_completion_matches(pBeginning, NextCandidate);
}

void OnLine(char* pLine)
{
    bEnded = pLine == nullptr;
    sEntered = pLine ? pLine : "";
    if (pLine && *pLine)
        add_history(pLine);
    std::free(pLine);
    rl_callback_handler_remove();
}

std::optional<std::string> ReadFromTerminal(Host& host)
{
    while (!host.GetInterrupts().MustEnd()) {
        sEntered.reset();
        rl_callback_handler_install("corvane> ", OnLine);
        while (!sEntered) {
            if (!host.WaitForInput(STDIN_FILENO))
                break;
            rl_callback_read_char();
        }
        if (sEntered)
            return bEnded ? std::nullopt : sEntered;
        host.GetInterrupts().Take(); // Ctrl-C gives up the line, not the prompt
        rl_callback_handler_remove();
        std::fputc('\n', stdout);
    }
    return std::nullopt;
}

std::optional<std::string> ReadFromInput(Host& host)
{
    std::string sLine;
    if (host.GetInterrupts().MustEnd() || !ReadLine(host, STDIN_FILENO, "standard input", sLine))
        return std::nullopt;
    return sLine;
}

Status RunLine(Host& host, const std::string& sLine, const Request& shell)
{
    bool bJson = shell.bJson;
    try {
        std::vector<std::string> vecWords = CLI::detail::split_up(sLine);
        for (std::string& sWord : vecWords)
            CLI::detail::remove_quotes(sWord);
        bJson = bJson || std::find(vecWords.begin(), vecWords.end(), "--json") != vecWords.end();
        Request request = ReadCommandLine(std::move(vecWords), true);
        request.bJson = bJson;
        if (request.command == Request::Command::Help) {
            fmt::print("{}", request.sText);
            return Status::Done;
        }
        return Commands::Run(host, request);
    } catch (const Failure& failure) {
        return ReportFailure(bJson, failure.GetStatus(), failure.what());
    }
}

} // namespace

Status RunShell(Host& host, const Request& request)
{
    const bool bTerminal = isatty(STDIN_FILENO) != 0;
    pCompletionHost = &host;
    std::setlocale(LC_CTYPE, ""); // names may hold any letters
    rl_attempted_completion_function = Complete;
    if (bTerminal)
        fmt::print("Type --help for the commands, quit to leave; Tab completes.\n");
    Status last = Status::Done;
    while (auto sLine = bTerminal ? ReadFromTerminal(host) : ReadFromInput(host)) {
        const std::string sTrimmed = CLI::detail::trim_copy(*sLine);
        if (sTrimmed == "quit" || sTrimmed == "exit")
            break;
        if (!sTrimmed.empty())
            last = RunLine(host, sTrimmed, request);
        std::fflush(stdout);
    }
    if (bTerminal)
        std::fputc('\n', stdout);
    return last;
}

} // namespace Tovra::Corvane
