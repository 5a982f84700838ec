// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

// The facts about a machine. Judge() uses only these.

/// The accounts in the bus's policy.
struct Names
{
    std::string user = "zviptv";       ///< user of the service
    std::string group = "zviptv-apps"; ///< group of the applications' users
};

enum class Reach
{
    Reached,
    Absent,  ///< nothing listens at the address
    Closed,  ///< this user may not open its socket
    Refused, ///< the listening program refuses this user
    Silent   ///< the listening program does not answer
};

struct BusFacts
{
    std::string address;
    bool isFromEnvironment = false;
    Reach reach = Reach::Absent;
    std::string reason; ///< reason of GIO why the bus cannot be reached
};

struct AccountFacts
{
    Names names;
    std::optional<unsigned> userId; ///< empty if there is no such user
    bool hasGroup = false;
};

/// The user who runs the doctor.
struct CallerFacts
{
    std::string name;
    bool isRoot = false;
    bool isServiceUser = false;
    bool isListed = false; ///< the user is in the group's list of members
    bool isMember = false; ///< this process is in the group, which is what the bus checks
};

/// Values are empty if the bus did not report them.
struct PolicyFacts
{
    std::vector<std::string> files;       ///< files of the policy in the folders that the bus reads
    std::optional<bool> deniesByDefault;  ///< a user may not call a process of the same user
    std::optional<bool> isLoaded;         ///< the bus applies the policy's rules for everybody
    std::optional<bool> isServiceAllowed; ///< the bus applies the policy's rules for the service's user
};

/// The outcome of the call of the service.
enum class Outcome
{
    NotAsked,
    Answered,
    Unreadable, ///< an answer that does not follow the protocol
    Failed,     ///< the owner of the name answered with an error
    Forbidden,  ///< the bus denied the call
    Silent,     ///< no answer within the time that the library waits
    Gone        ///< the owner left the bus
};

/// The answer of the helper bus to the announcement of a channel.
enum class Naming
{
    NotAsked,
    Owned,     ///< a bus name that has an owner
    Dead,      ///< a bus name without an owner
    Invalid,   ///< not a bus name
    Empty,     ///< an empty text, which means no endpoint
    OtherKey,  ///< pairs, but none with the key "dbusname"
    EmptyList, ///< no pairs
    Unanswered ///< an error, an answer of another type, or no answer within the time that the library waits
};

/// The answer of an endpoint to a request that changes nothing.
enum class Answering
{
    NotAsked,
    Readable,
    Failed,     ///< an error
    Silent,     ///< no answer within the time that the library waits
    OtherType,  ///< not a{sv}
    OtherValue, ///< a value is not a byte array
    Missing,    ///< a number is missing, or empty
    NoNumber    ///< a number cannot be read
};

struct EndpointFacts
{
    std::string type; ///< "PLAYERCONTROL"
    Naming naming = Naming::NotAsked;
    std::string named; ///< the name in the answer; for OtherKey, the key; for an error, its name and text

    std::string function; ///< "GetSourceState"
    Answering answering = Answering::NotAsked;
    std::string key;    ///< key of the value that cannot be read
    std::string detail; ///< D-Bus type or value of the reply; for an error, its name and text
};

struct ServiceFacts
{
    std::optional<bool> isOwned; ///< empty if the bus did not report it
    std::string owner;           ///< unique name
    unsigned process = 0;
    std::optional<unsigned> userId;
    std::string userName;

    // Facts about the process that this machine shows to this user.
    std::string program;
    std::string unit; ///< systemd unit, without ".service"
    bool isStopped = false;
    std::string loaded; ///< version of the library that it has loaded
    bool isLibraryReplaced = false;

    Outcome outcome = Outcome::NotAsked;
    std::string error;                    ///< name and text
    bool isConnectionAlive = false;       ///< its D-Bus thread answers a ping; checked if it has not answered
    std::vector<EndpointFacts> endpoints; ///< checked if it has answered
};

struct VersionFacts
{
    std::string tool;
    std::string toolFile;
    std::string loaded;             ///< version of the loaded library by its file name; may be empty
    std::string loadedFile;         ///< without symbolic links
    bool isFromLibraryPath = false; ///< its folder is in LD_LIBRARY_PATH
};

struct MachineFacts
{
    bool hasDBus = false; ///< the configuration of a system bus is installed
    bool runsSystemd = false;
    bool hasUnit = false;                 ///< zviptv-sim.service
    bool hasSysusers = false;             ///< the accounts, for systemd-sysusers
    std::string sample = "FILE.ts";       ///< a stream for the simulator
    std::string simulator = "zviptv-sim"; ///< with its folder if known, as the PATH of sudo differs
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
