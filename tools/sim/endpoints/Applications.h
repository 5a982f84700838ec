// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zviptv::sim {

/// The applications that have announced channels, until they withdraw them or leave the bus.
class Applications
{
public:
    /// `onGone` is called, in the main context, with the bus name of an application that has withdrawn its
    /// last channel or left the bus.
    explicit Applications(std::function<void(std::string const&)> onGone);
    ~Applications();
    Applications(Applications const&) = delete;
    Applications& operator=(Applications const&) = delete;

    /// `busName` is a unique name.
    void Add(std::string const& busName, std::string const& type);
    void Remove(std::string const& busName, std::string const& type);

    /// Their bus names.
    std::vector<std::string> Names() const;

    /// The names of each application.
    struct Description
    {
        std::string busName;
        std::string id;                 ///< of SetAppID; may be empty
        std::vector<std::string> types; ///< type words of its channels
    };
    std::vector<Description> List() const;

    std::size_t Count() const { return m_applications.size(); }

    /// Whether it has announced a channel.
    bool Has(std::string const& busName) const { return m_applications.count(busName) != 0; }

    /// The id that it has set with SetAppID; empty if it has set none, or has announced no channel.
    std::string IdOf(std::string const& busName) const;
    void SetId(std::string const& busName, std::string const& id);

private:
    class Watch;
    struct Application
    {
        std::set<std::string> types;
        std::string id;
        std::unique_ptr<Watch> watch;
    };

    void Gone(std::string busName);

    std::function<void(std::string const&)> m_onGone;
    std::map<std::string, Application> m_applications;
};

} // namespace zviptv::sim
