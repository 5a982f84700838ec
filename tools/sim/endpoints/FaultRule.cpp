// SPDX-License-Identifier: MIT
#include "FaultRule.h"

#include "FaultKeys.h"
#include "FaultOptions.h"
#include "RequestCheck.h"

#include <zviptv/Protocol.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace zviptv::sim {

namespace function = protocol::function;

namespace {

using Kind = FaultRule::Kind;
using Target = FaultRule::Target;

/// The value after the word of a fault.
struct Argument
{
    char const* name;     ///< null if there is no value
    char const* accepted; ///< accepted numbers; null for a key
    int minimum;
    int maximum;
};

constexpr Argument None{nullptr, nullptr, 0, 0};
constexpr Argument Key{"KEY", nullptr, 0, 0};
constexpr Argument Milliseconds{"MS", "a number of milliseconds, 0 to 2147483647", 0, INT_MAX};
constexpr Argument ResultNumber{"N", "a whole number, -2147483648 to 2147483647", INT_MIN, INT_MAX};
constexpr Argument Factor{"N", "a factor, 2 to 1000", 2, 1000};

constexpr unsigned Answers = static_cast<unsigned>(Target::Answer);
constexpr unsigned Pushes = static_cast<unsigned>(Target::Push);
constexpr unsigned Announcements = static_cast<unsigned>(Target::Announcement);

struct Word
{
    char const* text;
    Kind kind;
    Argument argument;
    unsigned targets;
};

constexpr Word Words[] = {
    {"delay", Kind::Delay, Milliseconds, Answers | Pushes | Announcements},
    {"drop", Kind::Drop, None, Answers | Pushes | Announcements},
    {"error", Kind::Error, None, Answers | Announcements},
    {"result", Kind::Result, ResultNumber, Answers},
    {"missing", Kind::Missing, Key, Answers | Pushes | Announcements},
    {"garbage", Kind::Garbage, Key, Answers | Pushes | Announcements},
    {"short", Kind::Short, Key, Answers | Pushes | Announcements},
    {"duplicate", Kind::Duplicate, None, Pushes},
    {"reorder", Kind::Reorder, None, Pushes},
    {"burst", Kind::Burst, Factor, Pushes},
    {"empty", Kind::Empty, None, Announcements},
    {"dead", Kind::Dead, None, Announcements},
};

/// Throws the error for a rule that cannot be read.
[[noreturn]] void Refuse(std::string const& text, std::string const& why)
{
    throw std::invalid_argument("cannot use the fault '" + text + "': " + why);
}

bool Takes(Word const& word, Target target)
{
    return (word.targets & static_cast<unsigned>(target)) != 0;
}

/// "delay:MS, drop or error".
std::string WordsOf(Target target)
{
    std::vector<std::string> words;
    for (Word const& word : Words) {
        if (Takes(word, target)) {
            words.push_back(word.text + (word.argument.name == nullptr
                                             ? std::string()
                                             : std::string(":") + word.argument.name));
        }
    }
    return OneOf(words);
}

std::vector<std::string> Functions()
{
    std::vector<std::string> functions = DescribedFunctions();
    functions.insert(functions.end(), {function::PESCB, function::CaptionCB, FaultRule::Announcement});
    return functions;
}

void ReadFunction(std::string const& text, std::string const& name, FaultRule& rule)
{
    std::vector<std::string> const functions = Functions();
    if (name != FaultRule::AllRequests &&
        std::find(functions.begin(), functions.end(), name) == functions.end()) {
        Refuse(text, "unknown function '" + name + "'; use * for all requests, " + OneOf(functions));
    }
    rule.function = name;
    rule.target = name == FaultRule::Announcement                          ? Target::Announcement
                  : name == function::PESCB || name == function::CaptionCB ? Target::Push
                                                                           : Target::Answer;
}

void ReadKey(std::string const& text, std::string const& key, FaultRule& rule)
{
    std::vector<std::string> const keys = FaultKeys(rule);
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
        std::string const message = rule.target == Target::Push           ? rule.function
                                    : rule.target == Target::Announcement ? "the answer to an announcement"
                                    : rule.function == FaultRule::AllRequests
                                        ? "any answer"
                                        : "the answer to " + rule.function;
        Refuse(text, "'" + key + "' is not a key of " + message + "; use " + OneOf(keys));
    }
    rule.key = key;
}

void ReadFault(std::string const& text, std::string const& fault, FaultRule& rule)
{
    std::size_t const colon = fault.find(':');
    std::string const name = fault.substr(0, colon);
    std::string const argument = colon == std::string::npos ? "" : fault.substr(colon + 1);
    auto const* const word = std::find_if(std::begin(Words), std::end(Words), [&](Word const& candidate) {
        return name == candidate.text && Takes(candidate, rule.target);
    });
    std::string const usable = "; use " + rule.function + "=" + WordsOf(rule.target);
    if (word == std::end(Words)) {
        Refuse(text, "unknown fault '" + name + "' of " + rule.function + usable);
    }
    bool const wantsArgument = word->argument.name != nullptr;
    if (!wantsArgument && colon != std::string::npos) {
        Refuse(text, name + " does not accept a value" + usable);
    }
    if (wantsArgument && argument.empty()) {
        Refuse(text, name + " needs a value, " + name + ":" + word->argument.name + usable);
    }
    rule.kind = word->kind;
    if (word->argument.accepted != nullptr) {
        std::optional<int> const number =
            ReadNumber<int>(argument, word->argument.minimum, word->argument.maximum);
        if (!number) {
            Refuse(text, "'" + argument + "' is not " + word->argument.accepted);
        }
        rule.number = *number;
    } else if (wantsArgument) {
        ReadKey(text, argument, rule);
    }
    if (rule.kind == Kind::Result) {
        rule.key = protocol::key::Result;
    } else if (rule.kind == Kind::Empty || rule.kind == Kind::Dead) {
        rule.key = protocol::key::DBusName;
    }
}

} // namespace

FaultRule FaultRule::Parse(std::string const& text)
{
    std::size_t const equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || text.find(',') < equals) {
        Refuse(text, "it is not FUNCTION=FAULT; use a text like MuteAudio=error or PESCB=delay:500,count=3");
    }
    FaultRule rule;
    ReadFunction(text, text.substr(0, equals), rule);
    std::size_t const comma = text.find(',', equals);
    ReadFault(text, text.substr(equals + 1, comma == std::string::npos ? comma : comma - equals - 1), rule);
    if (comma != std::string::npos) {
        try {
            ReadFaultOptions(text.substr(comma + 1), rule);
        } catch (std::invalid_argument const& failure) {
            Refuse(text, failure.what());
        }
    }
    return rule;
}

std::string FaultRule::Usage()
{
    return "FUNCTION=FAULT[,OPTION=VALUE]... FUNCTION is the \"functionname\" of a request, or * for all "
           "requests. FAULT is then " +
           WordsOf(Target::Answer) + ". For the FUNCTION PESCB (packets) or CaptionCB (captions), FAULT is " +
           WordsOf(Target::Push) + ". For the FUNCTION Announcement, FAULT is " +
           WordsOf(Target::Announcement) + ". OPTION=VALUE is " + AcceptedFaultOptions() + ".";
}

std::string FaultRule::Name() const
{
    auto const* const word = std::find_if(std::begin(Words), std::end(Words),
                                          [this](Word const& candidate) { return kind == candidate.kind; });
    std::string name = function + "=" + word->text;
    if (word->argument.accepted != nullptr) {
        name += ":" + std::to_string(number);
    } else if (word->argument.name != nullptr) {
        name += ":" + key;
    }
    return name;
}

std::string FaultRule::Text() const
{
    return Name() + FaultOptionsText(*this);
}

} // namespace zviptv::sim
