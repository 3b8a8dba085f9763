#pragma once

#include <deque>
#include <memory>
#include <string>

#include "Options.h"
#include "framework/FileSource.h"
#include "framework/ObservedSource.h"

namespace orvel::probe {

/** The bytes of a file as the plug-in is to see them. */
class Source {
  public:
    /** Throws host::SourceError when the file cannot be opened. */
    Source(const std::string& path, const SourceOptions& options,
           host::ObservedSource::Listener listener);
    /** The file itself, undisturbed. */
    host::FileSource& file() { return mFile; }
    host::ObservedSource& top() { return *mTop; }

  private:
    host::DataSource& last() { return mLayers.empty() ? mFile : *mLayers.front(); }
    template <typename Layer, typename... Arguments>
    void add(Arguments... arguments) {
        mLayers.push_front(std::make_unique<Layer>(last(), arguments...));
    }

    host::FileSource mFile;
    std::deque<std::unique_ptr<host::DataSource>> mLayers;  // each over the one behind it
    std::unique_ptr<host::ObservedSource> mTop;
};

}  // namespace orvel::probe
