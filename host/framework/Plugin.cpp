#include "framework/Plugin.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

namespace orvel::host {
namespace {

constexpr const char* kEntryPoint = "GETEXTRACTORDEF";
constexpr uint32_t kDefinitionVersion = 3;

std::string lastLoaderError() {
    const char* text = dlerror();
    return text != nullptr ? text : "no reason given";
}

std::string toText(const android::media_uuid_t& uuid) {
    std::string text;
    for (size_t i = 0; i < sizeof(uuid.b); ++i) {
        char byte[3];
        snprintf(byte, sizeof(byte), "%02x", uuid.b[i]);
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += byte;
    }
    return text;
}

}  // namespace

SniffResult::SniffResult(android::CreatorFunc creator, float confidence, void* message,
                         android::FreeMetaFunc freeMessage)
    : mCreator(creator), mConfidence(confidence), mMessage(message), mFreeMessage(freeMessage) {}

SniffResult::SniffResult(SniffResult&& other) noexcept
    : mCreator(std::exchange(other.mCreator, nullptr)),
      mConfidence(other.mConfidence),
      mMessage(std::exchange(other.mMessage, nullptr)),
      mFreeMessage(std::exchange(other.mFreeMessage, nullptr)) {}

SniffResult& SniffResult::operator=(SniffResult&& other) noexcept {
    if (this != &other) {
        reset();
        mCreator = std::exchange(other.mCreator, nullptr);
        mConfidence = other.mConfidence;
        mMessage = std::exchange(other.mMessage, nullptr);
        mFreeMessage = std::exchange(other.mFreeMessage, nullptr);
    }
    return *this;
}

void SniffResult::reset() {
    if (mMessage != nullptr && mFreeMessage != nullptr) mFreeMessage(mMessage);
    mMessage = nullptr;
}

Plugin::Plugin(const std::string& path) : mPath(path) {
    const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw PluginError(path + ": the library cannot be loaded: " + lastLoaderError() +
                          ". Check that the file exists, is built for this machine, and that the "
                          "libraries it needs are installed (ldd shows them).");
    }
    mGetDefinition = reinterpret_cast<android::GetExtractorDef>(dlsym(library, kEntryPoint));
    try {
        if (mGetDefinition == nullptr) {
            throw PluginError(path + ": the entry point " + kEntryPoint +
                              " cannot be found: " + lastLoaderError() +
                              ". The file is a library, but not an extractor plug-in.");
        }
        takeDefinition();
    } catch (...) {
        dlclose(library);  // nothing of it has run but its entry point
        throw;
    }
}

Plugin::Plugin(const std::string& name, android::GetExtractorDef entryPoint)
    : mPath(name), mGetDefinition(entryPoint) {
    takeDefinition();
}

void Plugin::takeDefinition() {
    const auto refuse = [&](const std::string& what) { return PluginError(mPath + ": " + what); };
    const android::ExtractorDef definition = mGetDefinition();
    if (definition.def_version != kDefinitionVersion) {
        throw refuse("the extractor definition has version " +
                     std::to_string(definition.def_version) + ", this host knows version " +
                     std::to_string(kDefinitionVersion) +
                     ". Build the plug-in against API level 29.");
    }
    if (definition.extractor_name == nullptr || *definition.extractor_name == '\0') {
        throw refuse("the extractor definition has no name. Check the plug-in's definition.");
    }
    if (definition.u.v3.sniff == nullptr) {
        throw refuse(
                "the extractor definition has no sniff function. Check the plug-in's definition.");
    }
    mSniff = definition.u.v3.sniff;
    mName = definition.extractor_name;
    mVersion = definition.extractor_version;
    mUuid = toText(definition.extractor_uuid);
}

std::vector<std::string> Plugin::extensions() const {
    const android::ExtractorDef definition = mGetDefinition();
    std::vector<std::string> list;
    const char** next = definition.u.v3.supported_types;
    for (; next != nullptr && *next != nullptr; ++next)
        list.emplace_back(*next);
    return list;
}

SniffResult Plugin::sniff(DataSource& source) const {
    float confidence = 0;
    void* message = nullptr;
    android::FreeMetaFunc freeMessage = nullptr;
    android::CreatorFunc creator = mSniff(source.table(), &confidence, &message, &freeMessage);
    return SniffResult(creator, confidence, message, freeMessage);
}

std::optional<Extractor> Plugin::create(DataSource& source, SniffResult&& result) const {
    SniffResult used = std::move(result);  // frees the message, if it is ours to free, at the end
    if (!used.taken()) throw std::logic_error(mPath + ": create() of a source that was not taken");
    android::CMediaExtractor* table = used.creator()(source.table(), used.message());
    if (table == nullptr) return std::nullopt;
    return Extractor(table);
}

}  // namespace orvel::host
