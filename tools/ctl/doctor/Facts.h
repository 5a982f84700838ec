// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

// What there is to know about a machine. Nothing here judges; Judge() does, from these alone.

/// Accounts that the bus's policy names.
struct Names
{
    std::string user = "zviptv";       ///< as whom the service runs
    std::string group = "zviptv-apps"; ///< to which applications belong
};

enum class Reach
{
    Reached,
    Absent,  ///< nothing listens at the address
    Closed,  ///< this user may not open its socket
    Refused, ///< what listens does not let this user in
    Silent   ///< what listens does not answer
};

struct BusFacts
{
    std::string address;
    bool isFromEnvironment = false;
    Reach reach = Reach::Absent;
    std::string reason; ///< GIO's, why it is not reached
};

struct AccountFacts
{
    Names names;
    std::optional<unsigned> userId; ///< empty where there is no such user
    bool hasGroup = false;
};

/// The user who asks.
struct CallerFacts
{
    std::string name;
    bool isRoot = false;
    bool isServiceUser = false;
    bool isListed = false; ///< the group's list of members has the user
    bool isMember = false; ///< this process is in the group, which is what the bus goes by
};

/// Empty where the bus did not tell.
struct PolicyFacts
{
    std::vector<std::string> files;       ///< of the policy, where the bus looks for it
    std::optional<bool> deniesByDefault;  ///< a user may not call a process of the same user
    std::optional<bool> isLoaded;         ///< the bus does what the policy says of everybody
    std::optional<bool> isServiceAllowed; ///< the bus does what the policy says of the service's user
};

/// What came of the question to the service.
enum class Outcome
{
    NotAsked,
    Answered,
    Unreadable, ///< an answer that is none of the protocol
    Failed,     ///< the owner of the name answered with an error
    Forbidden,  ///< the bus did not let the question through
    Silent,     ///< nothing came within the time that the library waits
    Gone        ///< the owner left the bus
};

/// What the helper bus answered to the announcement of a channel.
enum class Naming
{
    NotAsked,
    Owned,     ///< a bus name that has an owner
    Dead,      ///< a bus name without an owner
    Junk,      ///< not a bus name
    Empty,     ///< an empty text, which stands for no endpoint
    OtherKey,  ///< pairs of which none is called "dbusname"
    EmptyList, ///< no pair
    Unanswered ///< an error, an answer of another type, or nothing within the time that the library waits
};

/// What an endpoint answered to a request that changes nothing.
enum class Answering
{
    NotAsked,
    Readable,
    Failed,     ///< with an error
    Silent,     ///< nothing came within the time that the library waits
    OtherType,  ///< not a{sv}
    OtherValue, ///< a value is not a byte array
    Missing,    ///< a number is missing, or empty
    NoNumber    ///< a number cannot be read
};

struct EndpointFacts
{
    std::string type; ///< "PLAYERCONTROL"
    Naming naming = Naming::NotAsked;
    std::string named; ///< the name; of another key that key; of an error its name and text

    std::string function; ///< "GetSourceState"
    Answering answering = Answering::NotAsked;
    std::string key;    ///< of the value that cannot be read
    std::string detail; ///< D-Bus type or value that came; of an error its name and text
};

struct ServiceFacts
{
    std::optional<bool> isOwned; ///< empty where the bus did not tell
    std::string owner;           ///< unique name
    unsigned process = 0;
    std::optional<unsigned> userId;
    std::string userName;

    // Of the process, as far as this machine shows it to this user.
    std::string program;
    std::string unit; ///< of the machine's systemd, without ".service"
    bool isStopped = false;
    std::string loaded; ///< version of the library that it has loaded
    bool isLibraryReplaced = false;

    Outcome outcome = Outcome::NotAsked;
    std::string error;                    ///< name and text
    bool isConnectionAlive = false;       ///< asked when it kept silent: its D-Bus thread answers
    std::vector<EndpointFacts> endpoints; ///< looked at when it has answered
};

struct VersionFacts
{
    std::string tool;
    std::string toolFile;
    std::string loaded;     ///< of the library in this process; empty when its file's name does not tell
    std::string loadedFile; ///< without symbolic links
    bool isFromLibraryPath = false; ///< LD_LIBRARY_PATH names its folder
};

struct MachineFacts
{
    bool hasDBus = false; ///< the configuration of a system bus is installed
    bool runsSystemd = false;
    bool hasUnit = false;                 ///< zviptv-sim.service
    bool hasSysusers = false;             ///< the accounts, for systemd-sysusers
    std::string sample = "FILE.ts";       ///< a stream for the simulator
    std::string simulator = "zviptv-sim"; ///< with its folder where it is known: sudo has a PATH of its own
};

struct Facts
{
    BusFacts bus;
    AccountFacts accounts;
    CallerFacts caller;
    PolicyFacts policy;
    ServiceFacts service;
    VersionFacts versions;
    MachineFacts machine;
};

} // namespace zviptv::ctl::doctor
