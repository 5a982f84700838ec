#include "CommandLine.h"

int main(int argc, char* argv[])
{
    return static_cast<int>(zviptv::ctl::CommandLine().Run(argc, argv));
}
