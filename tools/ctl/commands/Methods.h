#pragma once

#include "output/Answer.h"

#include <string>
#include <vector>

namespace zviptv::ctl {

class Call;
class Session;

/// How a value travels.
enum class Form
{
    Number, ///< decimal text; flags and enumerations too
    Character,
    List, ///< records, with their number as another value
    Bytes
};

struct Parameter
{
    std::string type; ///< as in C++; numbers with their bits, such as uint32
    std::string name;
};

Form FormOf(Parameter const& parameter);

/// One method of the interfaces, as a command line sees it.
struct Method
{
    char const* interface;
    char const* name;
    std::vector<Parameter> inputs; ///< the arguments; a programme id counts as its fields
    std::vector<Parameter> outputs;
    std::size_t required; ///< so many of the arguments may not be left out
    void (*call)(Call&);  ///< null when the method takes a callback
    char const* instead;  ///< the command that does what the method is for, where `call` is null

    bool Takes(std::size_t count) const { return count >= required && count <= inputs.size(); }
};

/// All of them, in the order of the interfaces' declarations. Generated from the description of the protocol.
std::vector<Method> const& Methods();

/// "GetTTX(unsigned int index) -> ZVTTX ttx"
std::string Signature(Method const& method);

/// The method that `name` and the number of arguments mean. Throws a Failure that helps when there is none.
Method const& FindMethod(std::string const& name, std::size_t argumentCount);

/// Calls the method with the arguments of the command line.
Answer CallMethod(Method const& method, Session& session, std::vector<std::string> const& arguments);

/// Signatures of all methods, by interface; in JSON the whole description of the protocol.
Answer ListMethods();

} // namespace zviptv::ctl
