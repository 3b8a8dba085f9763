#pragma once

#include <media/MediaExtractorPluginApi.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/DataSource.h"
#include "framework/Extractor.h"

namespace orvel::host {

/** A library that cannot serve. what() names the file, the step, the reason and what to try. */
class PluginError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/**
 * A plug-in's answer about one source. Move-only.
 *
 * The message behind it is opaque. If the plug-in gave a function to free it, that is called once:
 * at destruction, or after the extractor has been made. Without one, create() hands the message
 * over for good, and a result that is dropped instead leaks it: such is the plug-in's contract.
 */
class SniffResult {
  public:
    SniffResult() = default;
    SniffResult(android::CreatorFunc creator, float confidence, void* message,
                android::FreeMetaFunc freeMessage);
    ~SniffResult() { reset(); }
    SniffResult(SniffResult&& other) noexcept;
    SniffResult& operator=(SniffResult&& other) noexcept;

    /** Whether the plug-in takes the source. */
    bool taken() const { return mCreator != nullptr; }
    /** 0 to 1; as the plug-in left it, also when it declined. */
    float confidence() const { return mConfidence; }
    android::CreatorFunc creator() const { return mCreator; }
    void* message() const { return mMessage; }

  private:
    void reset();

    android::CreatorFunc mCreator = nullptr;
    float mConfidence = 0;
    void* mMessage = nullptr;
    android::FreeMetaFunc mFreeMessage = nullptr;
};

/**
 * A loaded plug-in library. It stays loaded until the process ends, as in the framework: a
 * plug-in's thread may still be on its way out when the last of its objects has gone.
 *
 * Threads: sniff and create may be called from several threads at once; extensions() not beside
 * itself, because the plug-in rebuilds its one list on each call.
 */
class Plugin {
  public:
    /**
     * Loads `path` (RTLD_NOW, RTLD_LOCAL), finds GETEXTRACTORDEF and checks the definition: version
     * 3, a name, a sniff function. Throws PluginError. A path without a slash means a file in the
     * current folder, never the loader's search path.
     */
    explicit Plugin(const std::string& path);

    /**
     * The same checks for a plug-in that is linked into this program, which has nothing to load;
     * `name` stands for the path.
     */
    Plugin(const std::string& name, android::GetExtractorDef entryPoint);

    const std::string& path() const { return mPath; }
    const std::string& name() const { return mName; }
    uint32_t version() const { return mVersion; }
    /** In the 8-4-4-4-12 form, lower case. */
    const std::string& uuid() const { return mUuid; }

    /** The extensions enabled now; asks the library anew, since they follow a property. */
    std::vector<std::string> extensions() const;

    /** Offers the source to the plug-in. */
    SniffResult sniff(DataSource& source) const;

    /**
     * Makes the extractor for a source that was taken, and uses the result up. Nothing when the
     * plug-in makes none. Throws std::logic_error when the source was not taken. `source` must be
     * the one that was sniffed, and must outlive the extractor and its tracks.
     */
    std::optional<Extractor> create(DataSource& source, SniffResult&& result) const;

  private:
    void takeDefinition();

    // Set once in the constructor.
    std::string mPath;
    android::GetExtractorDef mGetDefinition = nullptr;
    android::SnifferFunc mSniff = nullptr;
    std::string mName;
    std::string mUuid;
    uint32_t mVersion = 0;
};

}  // namespace orvel::host
