// SPDX-License-Identifier: MIT
#include "verbs/Verbs.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace zviptv::verbs {

namespace {

/// Whether the words begin with the verb's own.
bool BeginWith(std::vector<std::string> const& words, std::vector<std::string> const& own)
{
    return words.size() >= own.size() && std::equal(own.begin(), own.end(), words.begin());
}

[[noreturn]] void RefuseVerb(std::vector<std::string> const& words)
{
    std::string known;
    std::string sameBeginning;
    for (Verb const& verb : Verbs()) {
        known += (known.empty() ? "" : ", ") + std::string(verb.words);
        if (!words.empty() && WordsOf(verb).front() == words.front()) {
            sameBeginning += (sameBeginning.empty() ? "" : ", ") + std::string(verb.words);
        }
    }
    std::string const& accepted = sameBeginning.empty() ? known : sameBeginning;
    throw VerbError((words.empty()           ? "a verb is missing"
                     : sameBeginning.empty() ? "unknown verb '" + words.front() + "'"
                                             : "incomplete verb '" + words.front() + "'") +
                        ": use " + accepted,
                    sameBeginning.empty() ? 0 : 1);
}

Verb const& FindVerb(std::vector<std::string> const& words)
{
    for (Verb const& verb : Verbs()) {
        if (BeginWith(words, WordsOf(verb))) {
            return verb;
        }
    }
    RefuseVerb(words);
}

[[noreturn]] void RefuseUse(Verb const& verb, std::string const& why, std::size_t word = 0)
{
    throw VerbError(std::string(verb.words) + ": " + why + "; use " + Synopsis(verb), word);
}

/// The value of an argument, or an error that names the verb.
Owned<GVariant> ParseFor(Verb const& verb, Form form, std::string const& text, std::size_t word)
try {
    return Parse(form, text);
} catch (std::invalid_argument const& failure) {
    RefuseUse(verb, failure.what(), word);
}

Option const* FindOption(Verb const& verb, std::string const& name)
{
    auto const found = std::find_if(verb.options.begin(), verb.options.end(),
                                    [&name](Option const& option) { return name == option.name; });
    return found == verb.options.end() ? nullptr : &*found;
}

/// Parses the words after the verb.
class Reader
{
public:
    explicit Reader(Verb const& verb) : m_verb(verb) {}

    void Read(std::vector<std::string> const& words, std::size_t next)
    {
        while (next < words.size()) {
            m_word = next;
            std::string const& word = words[next++];
            if (word.rfind("--", 0) != 0) {
                TakeArgument(word);
            } else if (std::size_t const equals = word.find('='); equals != std::string::npos) {
                TakeOption(word.substr(2, equals - 2), word.substr(equals + 1), m_word);
            } else if (next < words.size()) {
                TakeOption(word.substr(2), words[next], next);
                ++next;
            } else {
                RefuseUse(m_verb, "the option '" + word + "' needs a value", next);
            }
        }
        m_word = words.size();
    }

    std::vector<std::size_t> const& Arguments() const { return m_argumentWords; }

    Owned<GVariant> Parameters() const
    {
        if (m_arguments.size() < m_verb.arguments.size()) {
            RefuseUse(m_verb, std::string(NameOf(m_verb.arguments.at(m_arguments.size()))) + " is missing",
                      m_word);
        }
        GVariantBuilder tuple;
        g_variant_builder_init(&tuple, G_VARIANT_TYPE_TUPLE);
        for (Owned<GVariant> const& argument : m_arguments) {
            g_variant_builder_add_value(&tuple, argument.get());
        }
        if (!m_verb.options.empty()) {
            GVariantBuilder options;
            g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
            for (auto const& [name, value] : m_options) {
                g_variant_builder_add(&options, "{sv}", name.c_str(), value.get());
            }
            g_variant_builder_add_value(&tuple, g_variant_builder_end(&options));
        }
        return Owned<GVariant>(g_variant_ref_sink(g_variant_builder_end(&tuple)));
    }

private:
    void TakeArgument(std::string const& word)
    {
        if (m_arguments.size() == m_verb.arguments.size()) {
            RefuseUse(m_verb, "unexpected argument '" + word + "'", m_word);
        }
        m_arguments.push_back(ParseFor(m_verb, m_verb.arguments[m_arguments.size()], word, m_word));
        m_argumentWords.push_back(m_word);
    }

    void TakeOption(std::string const& name, std::string const& text, std::size_t valueAt)
    {
        Option const* const option = FindOption(m_verb, name);
        if (option == nullptr) {
            RefuseUse(m_verb, "unknown option '--" + name + "'", m_word);
        }
        bool const isRepeated = std::any_of(m_options.begin(), m_options.end(),
                                            [&name](auto const& given) { return given.first == name; });
        if (isRepeated) {
            RefuseUse(m_verb, "the option '--" + name + "' is given more than once", m_word);
        }
        m_options.emplace_back(name, ParseFor(m_verb, option->form, text, valueAt));
    }

    Verb const& m_verb;
    std::size_t m_word = 0; ///< position of the word that is being read
    std::vector<Owned<GVariant>> m_arguments;
    std::vector<std::size_t> m_argumentWords;
    std::vector<std::pair<std::string, Owned<GVariant>>> m_options;
};

void CheckOptions(Verb const& verb, GVariant* options)
{
    GVariantIter entries;
    g_variant_iter_init(&entries, options);
    char const* name = nullptr;
    for (GVariant* raw = nullptr; g_variant_iter_next(&entries, "{&sv}", &name, &raw) != FALSE;) {
        Owned<GVariant> const value(raw);
        Option const* const option = FindOption(verb, name);
        if (option == nullptr) {
            RefuseUse(verb, "unknown option '" + std::string(name) + "'");
        }
        Check(option->form, value.get());
    }
}

} // namespace

std::vector<Verb> const& Verbs()
{
    static std::vector<Verb> const verbs = {
        {"pause", "Pause", {}, {}, "Stop the clock and the stream"},
        {"play", "Play", {}, {}, "Let the clock run again"},
        {"seek", "Seek", {Form::Position}, {}, "Go to a position of the stream"},
        {"speed", "SetSpeed", {Form::Speed}, {}, "Let the clock run faster or slower; 1 is real time"},
        {"load", "Load", {Form::Input}, {}, "Play another input, from its start"},
        {"programme", "SelectProgramme", {Form::Programme}, {}, "Play another programme of the input"},
        {"lock", "Lock", {Form::Lockable}, {}, "Lock the programme or the service"},
        {"unlock", "Unlock", {Form::Lockable}, {}, "Unlock the programme or the service"},
        {"time", "SetTime", {Form::Time}, {}, "Set the guide's clock"},
        {"fault add",
         "AddFault",
         {Form::Fault},
         {{"count", Form::Count, "Only N messages"},
          {"for", Form::FaultTime, "Only for S seconds of the simulator's clock"}},
         "Make messages faulty, like --fault"},
        {"fault remove", "RemoveFault", {Form::Fault}, {}, "Remove the faults with this text"},
        {"fault clear", "ClearFaults", {}, {}, "Remove all faults"},
        {"mute", "Mute", {Form::Mutable, Form::Switch}, {}, "Mute the sound or the picture, or end the mute"},
        {"select", "Select", {Form::Track, Form::Index}, {}, "Select an audio track or a subtitle"},
        {"die",
         "Die",
         {},
         {{"for", Form::Duration, "Come back after S seconds"}},
         "Kill the service; --restart-after, or --for, brings it back"},
        {"restart", "Restart", {}, {}, "Start a dead service, or kill it and start it again"},
        {"reset", "Reset", {}, {}, "Restore the initial state, without a restart"},
        {"quit", "Quit", {}, {}, "End the simulator, like SIGTERM"},
    };
    return verbs;
}

std::vector<std::string> WordsOf(Verb const& verb)
{
    std::istringstream stream(verb.words);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string Synopsis(Verb const& verb)
{
    std::string synopsis = verb.words;
    for (Form const form : verb.arguments) {
        synopsis += std::string(" ") + NameOf(form);
    }
    for (Option const& option : verb.options) {
        synopsis += std::string(" [--") + option.name + " " + NameOf(option.form) + "]";
    }
    return synopsis;
}

Command Parse(std::vector<std::string> const& words)
{
    Verb const& verb = FindVerb(words);
    Reader reader(verb);
    reader.Read(words, WordsOf(verb).size());
    return Command{&verb, reader.Parameters(), reader.Arguments()};
}

void Check(std::string const& method, GVariant* parameters)
{
    for (Verb const& verb : Verbs()) {
        if (method != verb.method) {
            continue;
        }
        for (std::size_t i = 0; i < verb.arguments.size(); ++i) {
            Owned<GVariant> const value(g_variant_get_child_value(parameters, i));
            Check(verb.arguments[i], value.get());
        }
        if (!verb.options.empty()) {
            Owned<GVariant> const options(g_variant_get_child_value(parameters, verb.arguments.size()));
            CheckOptions(verb, options.get());
        }
    }
}

} // namespace zviptv::verbs
