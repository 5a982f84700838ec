// SPDX-License-Identifier: MIT
// Logs programmes and captions of the television until Ctrl-C: subtitle_logger deu
#include "SubtitleLogger.h"

#include <glib-unix.h>

#include <csignal>
#include <iostream>

int main(int argc, char** argv)
{
    LoggerOptions options;
    options.audio = zviptv::Language(argc == 2 ? argv[1] : "");
    if (!options.audio) {
        std::cerr << "usage: subtitle_logger LANGUAGE; a language has three letters, such as eng\n";
        return 2;
    }
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    auto const quit = [](gpointer data) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop*>(data));
        return G_SOURCE_CONTINUE;
    };
    g_unix_signal_add(SIGINT, quit, loop);
    g_unix_signal_add(SIGTERM, quit, loop);
    SubtitleLogger const logger(options, [](std::string const& line) { std::cout << line << std::endl; });
    g_main_loop_run(loop);
    std::cout << logger.Summary() << "\n";
    g_main_loop_unref(loop);
}
