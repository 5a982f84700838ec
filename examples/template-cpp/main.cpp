// SPDX-License-Identifier: MIT
// The application: mutes the television, or unlocks its programme.
#include "Player.h"

#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    std::string const command = argc == 2 ? argv[1] : "";
    Player player;
    if (command == "mute" || command == "unlock") {
        bool const isDone =
            command == "mute" ? player.Mute(true) : player.UnlockWhenLocked(std::chrono::seconds(10));
        std::cout << (isDone ? "done" : "failed: " + player.Problem()) << "\n";
        return isDone ? 0 : 1;
    }
    std::cerr << "usage: player mute|unlock\n";
    return 2;
}
