// The bytes of a file as the plug-in is to see them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "coverage_source.h"
#include "options.h"
#include "sniff_trace.h"

namespace orvel::probe {

// The file and what is put in front of it.
class Source {
  public:
    // Throws host::SourceError when the file cannot be opened.
    Source(const std::string& path, const SourceOptions& options);
    ~Source();
    // Puts `trace` in front, once; it sees what the plug-in sees.
    host::DataSource& traced(SniffTrace& trace);
    // -1 when it cannot be had.
    int64_t fileBytes();
    // What the plug-in has got of it.
    CoverageSource& coverage() { return *mCoverage; }
    host::DataSource& top() { return *mLayers.back(); }

  private:
    void add(std::unique_ptr<host::DataSource> layer) { mLayers.push_back(std::move(layer)); }
    std::vector<std::unique_ptr<host::DataSource>> mLayers;  // each over the one before it
    CoverageSource* mCoverage = nullptr;                     // one of them
};

}  // namespace orvel::probe
