// SPDX-License-Identifier: MIT
// Calls the service, then forks children that exit while its other threads use GLib: forking_application
// COUNT. Prints how many of the children ended.
#include <zviptv/IPTVServiceAPI.h>

#include <glib.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

std::atomic<bool> stop{false};

/// Holds GLib's lock of type descriptions most of the time.
void UseGLib()
{
    while (!stop) {
        g_variant_unref(g_variant_ref_sink(g_variant_new_array(
            G_VARIANT_TYPE("(a{s(iiiiiiiiaaaaaau)}a{u(tttttt)}a(ssssssss))"), nullptr, 0)));
    }
}

/// Waits some seconds, then kills the child.
bool Exits(pid_t child)
{
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (std::chrono::steady_clock::now() < end) {
        if (waitpid(child, nullptr, WNOHANG) == child) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return false;
}

} // namespace

int main(int count, char** arguments)
{
    int const forks = count > 1 ? std::atoi(arguments[1]) : 0;
    IIPGUtil* guide = nullptr;
    CIPTVServiceAPI::CreateIPGUtil(&guide);
    std::string genre;
    if (!guide->GetGenre(1, genre)) {
        std::fprintf(stderr, "the service does not answer; run one on the bus\n");
        return 1;
    }
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back(UseGLib);
    }
    int exited = 0;
    int hung = 0;
    for (int i = 0; i < forks && hung < 3; ++i) {
        pid_t const child = fork();
        if (child == 0) {
            std::exit(0);
        }
        (Exits(child) ? exited : hung) += 1;
    }
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::printf("%d of %d exited\n", exited, forks);
    CIPTVServiceAPI::DestroyIPGUtil();
    return 0;
}
