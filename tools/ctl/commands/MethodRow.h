#pragma once

#include "Arguments.h"
#include "Methods.h"
#include "output/Records.h"
#include "session/Session.h"

#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

// What the table of methods deduces from a member function: a parameter that is a reference to something that
// may change is an out-parameter, everything else an argument of the command line.

namespace zviptv::ctl {

template <typename Parameter>
constexpr bool IsOutput =
    std::is_lvalue_reference_v<Parameter> && !std::is_const_v<std::remove_reference_t<Parameter>>;

template <typename Value>
constexpr bool IsProgramId = std::is_same_v<Value, IPGProgramId>;

/// A C string may be absent, which means null.
template <typename Value>
constexpr bool IsOptional = std::is_same_v<Value, char const*>;

template <typename Parameter>
using Stored = std::conditional_t<IsOptional<Parameter>, std::optional<std::string>, std::decay_t<Parameter>>;

template <typename Value>
struct ElementOf
{
    static constexpr bool isVector = false;
};

template <typename Element>
struct ElementOf<std::vector<Element>>
{
    static constexpr bool isVector = true;
    using Type = Element;
};

/// The type as its name in the headers; numbers with their bits.
template <typename Value>
std::string TypeName()
{
    if constexpr (std::is_enum_v<Value>) {
        return InfoOf<Value>().Type();
    } else if constexpr (ElementOf<Value>::isVector) {
        return "std::vector<" + TypeName<typename ElementOf<Value>::Type>() + ">";
    } else if constexpr (std::is_same_v<Value, std::string>) {
        return "std::string";
    } else if constexpr (std::is_class_v<Value>) {
        return RecordInfo<Value>::type;
    } else if constexpr (std::is_same_v<Value, char const*>) {
        return "char const*";
    } else if constexpr (std::is_same_v<Value, bool>) {
        return "bool";
    } else if constexpr (std::is_same_v<Value, char>) {
        return "char";
    } else if constexpr (std::is_integral_v<Value>) {
        return std::string(std::is_signed_v<Value> ? "int" : "uint") + std::to_string(8 * sizeof(Value));
    } else {
        return std::is_same_v<Value, void*> ? "void*" : "callback";
    }
}

template <typename Value>
constexpr Form FormOf()
{
    if constexpr (std::is_same_v<Value, char>) {
        return Form::Character;
    } else if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
        return Form::Number;
    } else {
        return ElementOf<Value>::isVector ? Form::List : Form::Bytes;
    }
}

/// Takes the arguments of a call one after the other.
class ArgumentReader
{
public:
    ArgumentReader(Method const& method, std::vector<std::string> const& texts)
        : m_method(method), m_texts(texts)
    {
    }

    /// The value of the next argument, or arguments; a fresh value for an out-parameter.
    template <typename Parameter>
    Stored<Parameter> Read()
    {
        if constexpr (IsOutput<Parameter>) {
            return Stored<Parameter>{};
        } else if constexpr (IsOptional<Parameter>) {
            return m_next < m_texts.size() ? Stored<Parameter>(m_texts[m_next++]) : std::nullopt;
        } else if constexpr (IsProgramId<Parameter>) {
            IPGProgramId id{};
            ForEachField<IPGProgramId>([&](auto const& field) {
                using Member = std::remove_reference_t<decltype(id.*field.member)>;
                id.*field.member = Next<Member>();
            });
            return id;
        } else {
            return Next<Parameter>();
        }
    }

private:
    template <typename Value>
    Value Next()
    {
        std::size_t const index = m_next++;
        return ParseArgument<Value>(m_texts.at(index), {m_method.name, m_method.inputs.at(index).name});
    }

    Method const& m_method;
    std::vector<std::string> const& m_texts;
    std::size_t m_next = 0;
};

/// What a stored value is when it is passed to the method.
template <typename Parameter>
decltype(auto) Pass(Stored<Parameter>& stored)
{
    if constexpr (IsOptional<Parameter>) {
        return stored ? stored->c_str() : nullptr;
    } else {
        return static_cast<Stored<Parameter>&>(stored);
    }
}

template <auto Member>
struct MethodRow;

template <typename Interface, typename... Parameters, bool (Interface::*Member)(Parameters...)>
struct MethodRow<Member>
{
    char const* interface;
    char const* name;
    char const* instead = nullptr;

    /// The finished row, from the names of the parameters.
    template <typename... Names>
    Method operator()(Names... names) const
    {
        static_assert(sizeof...(Names) == sizeof...(Parameters), "a name for every parameter");
        Method method{interface, name, {}, {}, 0, nullptr, instead};
        (Describe<Parameters>(method, names), ...);
        if constexpr (!(std::is_pointer_v<Stored<Parameters>> || ...)) {
            method.call = instead == nullptr ? &Call : nullptr;
        }
        return method;
    }

private:
    template <typename Parameter>
    static void Describe(Method& method, char const* name)
    {
        using Value = std::decay_t<Parameter>;
        if constexpr (IsOutput<Parameter>) {
            method.outputs.push_back({TypeName<Value>(), name, FormOf<Value>()});
        } else if constexpr (IsProgramId<Value>) {
            ForEachField<Value>([&](auto const& field) {
                using FieldType = std::remove_reference_t<decltype(std::declval<Value&>().*field.member)>;
                Describe<FieldType>(method, field.name);
            });
        } else {
            method.inputs.push_back({TypeName<Value>(), name, FormOf<Value>()});
            method.required += IsOptional<Parameter> ? 0 : 1;
        }
    }

    static Answer Call(Method const& method, Session& session, std::vector<std::string> const& arguments)
    {
        ArgumentReader reader(method, arguments);
        // Braces: the arguments are read from left to right.
        std::tuple<Stored<Parameters>...> values{reader.Read<Parameters>()...};
        return std::apply(
            [&](auto&... value) {
                Answer answer;
                answer.result = session.Ask(method.name, [&] {
                    return (session.Get<Interface>().*Member)(Pass<Parameters>(value)...);
                });
                answer.text = "result: " + ToText(answer.result) + "\n";
                [[maybe_unused]] auto output = method.outputs.begin();
                (AddOutput<Parameters>(answer, output, value), ...);
                return answer;
            },
            values);
    }

    template <typename Parameter, typename Output>
    static void AddOutput(Answer& answer, Output& output, Stored<Parameter> const& value)
    {
        if constexpr (IsOutput<Parameter>) {
            answer.Add((output++)->name, value);
        }
    }
};

} // namespace zviptv::ctl
