// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zviptv::ctl {

class Call;

struct Parameter
{
    std::string type; ///< C++ type; numbers with their bits, such as uint32
    std::string name;
};

/// One method of the interfaces, for the command line.
struct Method
{
    char const* interface;
    char const* name;
    std::vector<Parameter> inputs; ///< the arguments; a programme id counts as its fields
    std::vector<Parameter> outputs;
    std::size_t required; ///< number of arguments that must be given
    void (*call)(Call&);  ///< null if the method takes a callback
    char const* instead;  ///< the command that replaces the method if `call` is null

    bool Takes(std::size_t count) const { return count >= required && count <= inputs.size(); }
};

/// All methods, in the order of the interfaces' declarations. Generated from the description of the protocol.
std::vector<Method> const& Methods();

} // namespace zviptv::ctl
