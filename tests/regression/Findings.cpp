#include "regression/Findings.h"

#include <cctype>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace orvel::test {

namespace {

// Hexadecimal digits or "text", then perhaps *N.
Bytes repeated(std::istream& words) {
    Bytes once;
    if (words.peek() == '"') {
        words.get();
        for (int c; (c = words.get()) != '"';) {
            if (c < 0) throw std::runtime_error("text without its end");
            once.push_back(static_cast<uint8_t>(c));
        }
    } else {
        std::string digits;
        while (std::isxdigit(words.peek()))
            digits += static_cast<char>(words.get());
        if (digits.empty() || digits.size() % 2 != 0) throw std::runtime_error("no bytes");
        for (size_t at = 0; at < digits.size(); at += 2)
            once.push_back(static_cast<uint8_t>(std::stoul(digits.substr(at, 2), nullptr, 16)));
    }
    size_t times = 1;
    if (words.peek() == '*') {
        words.get();
        words >> times;
    }
    Bytes bytes;
    for (size_t i = 0; i < times; ++i)
        bytes.insert(bytes.end(), once.begin(), once.end());
    return bytes;
}

}  // namespace

void PrintTo(const Finding& finding, std::ostream* out) {
    *out << finding.target << " " << finding.name << ", " << finding.input.size() << " bytes";
}

std::vector<Finding> readFindings(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot read " + path);
    std::vector<Finding> findings;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream words(line);
        Finding finding;
        char bar1 = 0, bar2 = 0;
        words >> finding.target >> bar1 >> finding.name >> bar2;
        if (bar1 != '|' || bar2 != '|') throw std::runtime_error("no finding: " + line);
        while (words >> std::ws && !words.eof())
            finding.input = finding.input + repeated(words);
        findings.push_back(std::move(finding));
    }
    return findings;
}

}  // namespace orvel::test
