// velnor_make_store FILE - writes the catalogue as it is delivered. Runs while the program is
// built.
#include <cstdio>
#include <fstream>

#include "organizer/store_tables.h"
#include "platform/memory_file_system.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: velnor_make_store FILE\n");
        return 2;
    }
    try {
        velnor::MemoryFileSystem files;
        velnor::makeOrganizerStore(files, "C:\\DataTabl.MDB");
        const auto content = files.content("C:\\DataTabl.MDB");
        std::ofstream out(argv[1], std::ios::binary);
        out.write(reinterpret_cast<const char*>(content.data()),
                  static_cast<std::streamsize>(content.size()));
        return out.flush() ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
