#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "Results.h"

namespace orvel::bench {

/** A measure as one process hands it to another. */
std::string measureToJson(const Measure& measure);
/** Throws nlohmann::json::exception on anything else than measureToJson's text. */
Measure measureFromJson(const std::string& text);

/** One case as --json reports it: times in seconds, memory in bytes. */
nlohmann::ordered_json caseToJson(const CaseResult& result);

}  // namespace orvel::bench
