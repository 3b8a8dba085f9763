#include "framework/PluginPath.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace orvel::host {
namespace {

namespace fs = std::filesystem;

constexpr char kLibrary[] = "liborvelmedia2_parserextractor.so";

}  // namespace

std::string findPlugin(const std::string& wanted) {
    if (!wanted.empty()) return wanted;
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    if (!error) {
        for (const fs::path& place : {folder, folder / ORVEL_LIBRARIES_FROM_BIN}) {
            const fs::path library = (place / kLibrary).lexically_normal();
            if (fs::exists(library, error)) return library.string();
        }
    }
    // The framework's half takes paths only: ask the loader which one it means. The library is not
    // closed again, since it is about to be used.
    void* library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
    link_map* map = nullptr;
    if (library && dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 && map->l_name[0] != '\0') {
        return map->l_name;
    }
    throw std::runtime_error(std::string(kLibrary) + " is neither in " + folder.string() +
                             " nor in " ORVEL_LIBRARIES_FROM_BIN
                             " beside it, and the loader does not find it; name it " +
                             "with --plugin PATH");
}

}  // namespace orvel::host
