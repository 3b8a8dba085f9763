#include "MediaCache.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "LateAudio.h"
#include "Process.h"

namespace orvel::bench {
namespace {

namespace fs = std::filesystem;

// Stands for the recipe of what writeLateAudio makes; to be changed with it.
constexpr const char* kLateAudioRecipe = "sound packets 40 s behind their pictures";

std::string recipeText(const Recipe& recipe) {
    std::string text = recipe.arguments != nullptr ? recipe.arguments : kLateAudioRecipe;
    if (recipe.seed != Media::Count) {
        text += " < " + recipeText(kRecipes[static_cast<size_t>(recipe.seed)]);
    }
    return text;
}

std::string contents(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> commandLine(const Recipe& recipe, const fs::path& seed,
                                     const fs::path& output) {
    std::vector<std::string> words = {"ffmpeg", "-nostdin",  "-hide_banner",
                                      "-y",     "-loglevel", "error"};
    std::istringstream arguments(recipe.arguments);
    for (std::string word; arguments >> word;)
        words.push_back(word == "@" ? seed.string() : word);
    words.push_back(output.string());
    return words;
}

}  // namespace

fs::path MediaCache::defaultFolder() {
    const char* cache = getenv("XDG_CACHE_HOME");
    if (cache != nullptr && *cache == '/') return fs::path(cache) / "orvelmedia-bench";
    const char* home = getenv("HOME");
    if (home == nullptr || *home == '\0') {
        throw std::runtime_error(
                "neither XDG_CACHE_HOME nor HOME is set; name a folder for the "
                "media with --media DIR");
    }
    return fs::path(home) / ".cache" / "orvelmedia-bench";
}

MediaCache::MediaCache(fs::path folder)
    : mFolder(folder.empty() ? defaultFolder() : std::move(folder)) {
    fs::create_directories(mFolder);
}

fs::path MediaCache::file(Media media) const {
    const Recipe& recipe = kRecipes[static_cast<size_t>(media)];
    const fs::path path = mFolder / recipe.file;
    const fs::path stamp = mFolder / (std::string(recipe.file) + ".recipe");
    const std::string text = recipeText(recipe);
    if (fs::exists(path) && contents(stamp) == text) return path;

    const fs::path seed = recipe.seed != Media::Count ? file(recipe.seed) : fs::path();
    fprintf(stderr, "making %s, once ...", path.c_str());
    const auto begin = std::chrono::steady_clock::now();
    // Complete under its name or not there, also when two runs make it at once.
    const fs::path part = mFolder / (std::string(recipe.file) + "." + std::to_string(getpid()));
    try {
        if (recipe.arguments != nullptr) {
            run(commandLine(recipe, seed, part));
        } else {
            writeLateAudio(seed.string(), part.string());
        }
    } catch (...) {
        fputc('\n', stderr);
        fs::remove(part);
        throw;
    }
    fs::remove(stamp);
    fs::rename(part, path);
    std::ofstream(stamp) << text;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    fprintf(stderr, " %.0f MB in %.1f s\n", 1e-6 * static_cast<double>(fs::file_size(path)),
            took.count());
    return path;
}

fs::path MediaCache::warmFile(Media media) const {
    fs::path path = file(media);
    std::ifstream stream(path, std::ios::binary);
    std::vector<char> buffer(1 << 20);
    while (stream.read(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
    }
    return path;
}

}  // namespace orvel::bench
