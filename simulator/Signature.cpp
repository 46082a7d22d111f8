#include "simulator/Signature.h"
#include "simulator/Json.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

constexpr std::string_view basicTypes = "ybnqiuxtdsogh";
constexpr std::size_t nMaximumLength = 255;
constexpr unsigned nMaximumDepth = 32;

// Walks over one complete type at a time.
class Parser
{
public:
    explicit Parser(std::string_view text) : all(text) {}

    bool IsAtEnd() const { return nPosition == all.size(); }

    std::string_view TakeType(unsigned nArrays = 0, unsigned nStructs = 0)
    {
        const std::size_t nStart = nPosition;
        if (nArrays > nMaximumDepth || nStructs > nMaximumDepth)
            Fail("is nested too deeply");
        const char nType = Take();
        if (nType == 'a' && Peek() == '{')
            TakeEntry(nArrays + 1, nStructs);
        else if (nType == 'a')
            TakeType(nArrays + 1, nStructs);
        else if (nType == '(')
            TakeMembers(nArrays, nStructs + 1);
        else if (nType != 'v' && !IsBasicType(nType))
            Fail("holds what is no type");
        return all.substr(nStart, nPosition - nStart);
    }

private:
    char Peek() const { return IsAtEnd() ? '\0' : all[nPosition]; }

    char Take()
    {
        if (IsAtEnd())
            Fail("ends too early");
        return all[nPosition++];
    }

    void TakeEntry(unsigned nArrays, unsigned nStructs)
    {
        Take();
        if (!IsBasicType(Take()))
            Fail("has a dictionary whose key is no basic type");
        TakeType(nArrays, nStructs + 1);
        if (Take() != '}')
            Fail("has a dictionary that is not a key and a value");
    }

    void TakeMembers(unsigned nArrays, unsigned nStructs)
    {
        if (Peek() == ')')
            Fail("has a struct without members");
        while (Peek() != ')')
            TakeType(nArrays, nStructs);
        Take();
    }

    [[noreturn]] void Fail(const char* pWhat) const
    {
        throw Problem("the signature \"" + std::string(all) + "\" " + pWhat);
    }

    std::string_view all;
    std::size_t nPosition = 0;
};

} // namespace

bool IsBasicType(char nType)
{
    return nType != '\0' && basicTypes.find(nType) != std::string_view::npos;
}

std::vector<std::string> SplitSignature(std::string_view signature)
{
    if (signature.size() > nMaximumLength)
        throw Problem("a signature has at most 255 characters");
    Parser parser(signature);
    std::vector<std::string> vecTypes;
    while (!parser.IsAtEnd())
        vecTypes.emplace_back(parser.TakeType());
    return vecTypes;
}

void CheckSingleType(std::string_view signature)
{
    if (SplitSignature(signature).size() != 1)
        throw Problem("\"" + std::string(signature) + "\" is not one complete type");
}

std::pair<std::string, std::string> SplitDictionaryEntry(const std::string& sDictionary)
{
    return {sDictionary.substr(2, 1), sDictionary.substr(3, sDictionary.size() - 4)};
}

std::vector<std::string> SplitStruct(const std::string& sStruct)
{
    return SplitSignature(std::string_view(sStruct).substr(1, sStruct.size() - 2));
}

bool IsObjectPath(std::string_view path)
{
    const auto isPartOfName = [](char n) {
        return (n >= 'a' && n <= 'z') || (n >= 'A' && n <= 'Z') || (n >= '0' && n <= '9') ||
               n == '_' || n == '/';
    };
    if (path == "/")
        return true;
    return !path.empty() && path.front() == '/' && path.back() != '/' &&
           path.find("//") == std::string_view::npos &&
           std::all_of(path.begin(), path.end(), isPartOfName);
}

} // namespace Tovra::Simulator
