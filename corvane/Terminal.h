#pragma once

#include "corvane/Host.h"
#include "corvane/Secret.h"

namespace Tovra::Corvane
{

/** Whether standard output takes colour: a terminal, and NO_COLOR is not set. */
bool HasColour();

/** Asks for a passphrase on the terminal, without showing it. Throws Failure when interrupted. */
void AskPassphrase(Host& host, Secret& secret);

/** The first line of a file, "-" being standard input. Throws Failure. */
void ReadPassphrase(Host& host, const std::string& sFile, Secret& secret);

/**
 * The next line of an input, and nothing beyond it; nothing at its end. What is longer than a
 * command or a passphrase can be is cut off. Throws Failure when interrupted, or when `sWhat`
 * cannot be read.
 */
bool ReadLine(Host& host, int nInput, const std::string& sWhat, std::string& sLine);

/** What a command waits for, on standard error: in place on a terminal, a line a change else. */
class Progress
{
public:
    explicit Progress(bool bQuiet);
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(const std::string& sText);

    /** Makes room for the result. */
    void End();

private:
    const bool bShown;
    const bool bInPlace;
    std::string sLast;
};

} // namespace Tovra::Corvane
