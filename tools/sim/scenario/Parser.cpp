// SPDX-License-Identifier: MIT
#include "Parser.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <sstream>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::size_t MaxNested = 16;
constexpr std::size_t MaxIncluded = 1000;
constexpr std::size_t MaxSteps = 10000;
constexpr std::size_t MaxErrors = 100;
constexpr double MaxSeconds = 1000000;
constexpr char ByteOrderMark[] = "\xEF\xBB\xBF";
constexpr char Forms[] =
    "SECONDS VERB, after METHOD VERB, expect METHOD within SECONDS, expect no METHOD for "
    "SECONDS, or include FILE";

/// The word; if it is missing, throws an error that says what is missing.
Word const& Require(std::vector<Word> const& words, std::size_t index, std::string const& what)
{
    if (index >= words.size()) {
        throw LineError(words.back().end, what);
    }
    return words[index];
}

double ToSeconds(Word const& word)
{
    double seconds = 0;
    char const* const end = word.text.data() + word.text.size();
    auto const [rest, failure] = std::from_chars(word.text.data(), end, seconds);
    if (failure != std::errc() || rest != end || !(seconds >= 0 && seconds <= MaxSeconds)) {
        throw LineError(word.column,
                        "'" + word.text + "' is not a time: use a number of seconds, 0 to 1000000");
    }
    return seconds;
}

bool LooksLikeNumber(std::string const& text)
{
    return !text.empty() && std::string("+-.0123456789").find(text.front()) != std::string::npos;
}

void RefuseRest(std::vector<Word> const& words, std::size_t next, std::string const& use)
{
    if (next < words.size()) {
        throw LineError(words[next].column, "unexpected word '" + words[next].text + "': use " + use);
    }
}

/// expect [no] METHOD [KEY=VALUE...] within|for SECONDS, from METHOD or "no" on.
Expectation TakeExpectation(std::vector<Word> const& words, std::size_t next)
{
    bool const isWanted = Require(words, next,
                                  "METHOD is missing: use expect METHOD within SECONDS or expect no "
                                  "METHOD for SECONDS")
                              .text != "no";
    std::string const preposition = isWanted ? "within" : "for";
    std::string const use =
        std::string(isWanted ? "expect" : "expect no") + " METHOD [KEY=VALUE...] " + preposition + " SECONDS";
    next += isWanted ? 0 : 1;
    Require(words, next, "METHOD is missing: use " + use);
    Expectation expectation{Pattern::Take(words, next), isWanted, 0};
    Word const& given = Require(words, next++, "'" + preposition + " SECONDS' is missing: use " + use);
    if (given.text != preposition) {
        throw LineError(given.column, "unexpected word '" + given.text + "': use " + use);
    }
    Word const& seconds = Require(words, next++, "SECONDS is missing: use " + use);
    expectation.seconds = ToSeconds(seconds);
    if (expectation.seconds == 0) {
        throw LineError(seconds.column, "0 seconds check nothing: use a number of seconds above 0");
    }
    RefuseRest(words, next, use);
    return expectation;
}

/// Ends reading a scenario with too many errors.
struct TooManyErrors
{
};

/// The content of a file without a byte order mark.
std::string WithoutMark(std::string content)
{
    if (content.rfind(ByteOrderMark, 0) == 0) {
        content.erase(0, sizeof(ByteOrderMark) - 1);
    }
    return content;
}

class Parser
{
public:
    explicit Parser(ScenarioSource const& source) : m_source(source) {}

    Scenario Read(std::string const& file)
    {
        m_scenario.file = file;
        try {
            ReadFile(file);
        } catch (TooManyErrors const&) {
            m_problems +=
                "zviptv-sim: stopped after 100 errors: fix these, then run the scenario again to see more\n";
        } catch (std::runtime_error const& failure) {
            m_problems = "zviptv-sim: cannot open " + file + ": " + failure.what() +
                         "; check that it is a file that can be read\n";
        }
        if (!m_problems.empty()) {
            m_problems.pop_back();
            throw ScenarioError(m_problems);
        }
        return std::move(m_scenario);
    }

private:
    /// @throws std::runtime_error if it cannot be read
    void ReadFile(std::string const& file)
    {
        std::istringstream content(WithoutMark(m_source.read(file)));
        m_open.push_back(std::filesystem::path(file).lexically_normal().string());
        unsigned number = 0;
        for (std::string line; std::getline(content, line);) {
            ++number;
            try {
                ReadLine({file, number, 1}, SplitLine(line));
            } catch (LineError const& failure) {
                AddProblem({file, number, failure.Column()}, failure.what());
            }
            if (line.find('\0') != std::string::npos) {
                break; // not a text file: the following lines would cause the same error
            }
        }
        m_open.pop_back();
    }

    void AddProblem(Place const& place, char const* what)
    {
        if (m_errors == MaxErrors) {
            throw TooManyErrors();
        }
        ++m_errors;
        m_problems += ToText(place) + ": " + what + "\n";
    }

    void ReadLine(Place place, Line const& line)
    {
        std::vector<Word> const& words = line.words;
        if (words.empty()) {
            return;
        }
        if (words.front().text == "include") {
            Include(words, place.file);
            return;
        }
        if (m_scenario.steps.size() == MaxSteps) {
            throw LineError(1, "too many steps: use 10000 at most");
        }
        place.column = words.front().column;
        Step step;
        step.place = std::move(place);
        std::size_t const action = TakeStart(words, step);
        if (words[action].text == "expect") {
            step.expectation = TakeExpectation(words, action + 1);
        } else {
            std::vector<Word> verb(words.begin() + static_cast<std::ptrdiff_t>(action), words.end());
            m_source.check(verb, std::filesystem::path(step.place.file).parent_path().string());
            for (Word const& word : verb) {
                step.verb.push_back(word.text);
            }
        }
        step.text = line.text;
        m_scenario.steps.push_back(std::move(step));
    }

    /// Reads when the step runs. Returns the position of the following word.
    static std::size_t TakeStart(std::vector<Word> const& words, Step& step)
    {
        std::size_t next = 0;
        if (words.front().text == "after") {
            Require(words, ++next, "METHOD is missing: use after METHOD [KEY=VALUE...] VERB");
            step.after = Pattern::Take(words, next);
        } else if (LooksLikeNumber(words.front().text)) {
            step.second = ToSeconds(words[next++]);
        } else if (words.front().text != "expect") {
            throw LineError(words.front().column,
                            "unknown beginning of a step '" + words.front().text + "': use " + Forms);
        }
        Require(words, next, "a verb or 'expect' is missing: use SECONDS VERB or after METHOD VERB");
        return next;
    }

    void Include(std::vector<Word> const& words, std::string const& from)
    {
        Word const& name = Require(words, 1, "FILE is missing: use include FILE");
        RefuseRest(words, 2, "include FILE");
        std::string const file =
            (std::filesystem::path(from).parent_path() / name.text).lexically_normal().string();
        if (std::find(m_open.begin(), m_open.end(), file) != m_open.end()) {
            throw LineError(name.column, file + " includes itself: remove one of the includes");
        }
        if (m_open.size() == MaxNested) {
            throw LineError(name.column,
                            "includes are nested too deeply: use 16 files at most in each other");
        }
        if (++m_included > MaxIncluded) {
            throw LineError(name.column, "too many includes: use 1000 at most");
        }
        try {
            ReadFile(file);
        } catch (std::runtime_error const& failure) {
            throw LineError(name.column, "cannot open " + file + ": " + failure.what());
        }
    }

    ScenarioSource const& m_source;
    Scenario m_scenario;
    std::vector<std::string> m_open; ///< the present file, and those that include it
    std::size_t m_included = 0;
    std::string m_problems; ///< a line for each error
    std::size_t m_errors = 0;
};

} // namespace

std::string ToText(Place const& place)
{
    return place.file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

Scenario ParseScenario(std::string const& file, ScenarioSource const& source)
{
    return Parser(source).Read(file);
}

} // namespace zviptv::sim
