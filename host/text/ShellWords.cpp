#include "text/ShellWords.h"

#include <cstddef>

namespace host
{

namespace
{

constexpr std::string_view kBlanks = " \t";

/// Goes through a line once, from its begin to its end.
class Splitter
{
  public:
    Splitter(std::string_view ofFile, std::string fileName, int lineNumber)
        : line(ofFile), file(std::move(fileName)), number(lineNumber)
    {}

    std::vector<std::string> Words()
    {
        std::vector<std::string> words;
        while (true) {
            next = line.find_first_not_of(kBlanks, next);
            if (next == std::string_view::npos || line[next] == '#') {
                return words;
            }
            words.push_back(Word());
        }
    }

  private:
    std::string Word()
    {
        if (line[next] == '~') {
            RefuseMeaning(next);
        }
        std::string word;
        while (next < line.size() && kBlanks.find(line[next]) == std::string_view::npos) {
            const char c = line[next];
            if (c == '\'') {
                AddSingleQuoted(word);
            } else if (c == '"') {
                AddDoubleQuoted(word);
            } else if (c == '\\') {
                AddEscaped(word);
            } else {
                AddPlain(word);
            }
        }
        return word;
    }

    void AddPlain(std::string& word)
    {
        constexpr std::string_view kMeaningful = "|&;<>()$`*?";
        if (kMeaningful.find(line[next]) != std::string_view::npos) {
            RefuseMeaning(next);
        }
        word += line[next++];
    }

    void AddEscaped(std::string& word)
    {
        if (next + 1 == line.size()) {
            Refuse(next, "nothing follows this backslash; a job stands on one line");
        }
        word += line[next + 1];
        next += 2;
    }

    void AddSingleQuoted(std::string& word)
    {
        const std::size_t end = line.find('\'', next + 1);
        if (end == std::string_view::npos) {
            RefuseOpen(next);
        }
        word += line.substr(next + 1, end - next - 1);
        next = end + 1;
    }

    void AddDoubleQuoted(std::string& word)
    {
        const std::size_t begin = next++;
        constexpr std::string_view kEscapable = "\"\\$`";
        while (next < line.size() && line[next] != '"') {
            const bool isEscape = line[next] == '\\' && next + 1 < line.size() &&
                                  kEscapable.find(line[next + 1]) != std::string_view::npos;
            if (line[next] == '$' || line[next] == '`') {
                RefuseMeaning(next);
            }
            next += isEscape ? 1 : 0;
            word += line[next++];
        }
        if (next == line.size()) {
            RefuseOpen(begin);
        }
        ++next;
    }

    [[noreturn]] void RefuseOpen(std::size_t at) const
    {
        Refuse(at, "the quotation that begins here has no end on this line; close it");
    }
    [[noreturn]] void RefuseMeaning(std::size_t at) const
    {
        Refuse(at, std::string(1, line[at]) + " means something to a shell and nothing here; write "
                                              "it in single quotes where it belongs to a name");
    }
    [[noreturn]] void Refuse(std::size_t at, const std::string& sentence) const
    {
        throw InputError(file, {number, static_cast<int>(at) + 1}, sentence);
    }

    std::string_view line;
    std::string file;
    int number;
    std::size_t next{0};
};

} // namespace

std::vector<std::string> ShellWords(std::string_view line, const std::string& file, int number)
{
    return Splitter(line, file, number).Words();
}

} // namespace host
