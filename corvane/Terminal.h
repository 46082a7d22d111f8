#pragma once

#include "corvane/Host.h"
#include "corvane/Secret.h"

namespace Tovra::Corvane
{

/** Whether standard output takes colour: a terminal, and NO_COLOR is not set. */
bool HasColour();

/**
 * Asks for a passphrase on the terminal, without showing it. Throws Failure when there is no
 * terminal or the user interrupts.
 */
void AskPassphrase(Host& host, const std::string& sPrompt, Secret& secret);

/** The first line of a file, "-" being standard input. Throws Failure. */
void ReadPassphrase(const std::string& sFile, Secret& secret);

/** What a command waits for, on standard error: in place on a terminal, a line a change else. */
class Progress
{
public:
    explicit Progress(bool bQuiet);
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(const std::string& sText);

private:
    const bool bShown;
    const bool bInPlace;
    std::string sLast;
};

} // namespace Tovra::Corvane
