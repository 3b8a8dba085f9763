#include "html_page.h"

#include <openssl/evp.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "html_assets.h"
#include "html_text.h"
#include "text.h"

namespace orvel::probe {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMaxOpenSections = 4;  // with more files each is folded until it is asked for
constexpr char kPartSuffix[] = ".part";

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
    throw std::runtime_error("--html " + printable(path) + ": " + why);
}

const char* classOf(Result result) {
    switch (result) {
        case Result::Taken:
            return "good";
        case Result::Declined:
            return "warn";
        default:
            return "bad";
    }
}

std::string badge(Result result) {
    return std::string("<b class=\"badge ") + classOf(result) + "\">" + resultName(result) + "</b>";
}

// Lets this script run and no other, wherever it might have come from.
std::string scriptHash() {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    if (EVP_Digest(kHtmlScript, strlen(kHtmlScript), digest, &size, EVP_sha256(), nullptr) != 1) {
        throw std::runtime_error("libcrypto offers no SHA-256 here");
    }
    return "sha256-" + base64(digest, size);
}

}  // namespace

HtmlPage::HtmlPage(const std::string& path, const std::vector<std::string>& inputs)
    : mPath(path), mFiles(inputs.size()) {
    std::error_code ignored;
    if (fs::is_symlink(path, ignored)) mPath = fs::weakly_canonical(path, ignored).string();
    if (fs::is_directory(mPath, ignored)) refuse(path, "is a directory");
    if (fs::exists(mPath, ignored)) {
        if (!fs::is_regular_file(mPath, ignored)) refuse(path, "is not a regular file");
        if (access(mPath.c_str(), W_OK) != 0) refuse(path, strerror(errno));
        for (const std::string& input : inputs) {
            if (fs::equivalent(mPath, input, ignored)) refuse(path, "is a file to be read");
        }
    }
    fs::path folder = fs::path(mPath).parent_path();
    if (folder.empty()) folder = ".";
    if (!fs::is_directory(folder, ignored)) refuse(path, "there is no such folder");
    if (access(folder.c_str(), W_OK | X_OK) != 0) refuse(path, strerror(errno));
}

void HtmlPage::add(const std::string& file, const HtmlSection& section) {
    const std::string id = "file-" + std::to_string(++mAdded);
    const std::string name = foreignText(file), remark = foreignText(section.remark);
    if (mAdded == 1) mTitle = file;
    mCounts[static_cast<size_t>(section.result)]++;
    const std::string cells = section.cells.empty() ? "<td></td><td></td><td></td>" : section.cells;
    mRows += "<tr><td data-name=\"file\"><span><a href=\"#" + id + "\">" + name + "</a>" +
             (section.remark.empty() ? "" : "<br><small>" + remark + "</small>") +
             "</span></td><td data-name=\"result\">" + badge(section.result) + "</td>" + cells +
             "</tr>\n";
    mSections += "<details id=\"" + id + "\"" + (mFiles <= kMaxOpenSections ? " open" : "") +
                 "><summary><h2>" + name + "</h2> " + badge(section.result) + "</summary>\n";
    if (!section.remark.empty()) {
        mSections += std::string("<p class=\"remark ") + classOf(section.result) + "\">" + remark +
                     "</p>\n";
    }
    mSections += section.body + "</details>\n";
}

void HtmlPage::addError(const std::string& text) {
    mErrors += "<p class=\"remark bad\">" + foreignText(text) + "</p>\n";
}

std::string HtmlPage::head() const {
    const std::string title = mFiles == 1 ? escaped(printable(mTitle)) : countText(mFiles, "file");
    std::string html =
            "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
            "style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'; script-src '" +
            scriptHash() + "'\">\n<title>" + title + " - orvelprobe</title>\n<style>\n" +
            kHtmlStyle + "</style></head>\n<body><header><h1>orvelprobe</h1>\n<p>" +
            countText(mFiles, "file") + ": ";
    const char* separator = "";
    for (size_t i = 0; i < mCounts.size(); i++) {
        if (mCounts[i] == 0) continue;
        html += separator + countText(mCounts[i]) + " " + resultName(static_cast<Result>(i));
        separator = ", ";
    }
    html += "</p>\n<noscript><p class=\"remark warn\">The plots need JavaScript; everything else "
            "is "
            "here without it.</p></noscript></header>\n" +
            mErrors;
    if (mFiles > 1) {
        html += "<table class=\"cards files\"><thead><tr><th>file</th><th>result</th>"
                "<th>container</th><th>tracks</th><th>read</th></tr></thead>\n<tbody>" +
                mRows + "</tbody></table>\n";
    }
    return html;
}

void HtmlPage::save() const {
    const std::string part = mPath + kPartSuffix;
    const std::string page = head() + mSections +
                             "<footer>orvelprobe " ORVEL_VERSION "</footer>\n<script>" +
                             kHtmlScript + "</script></body></html>\n";
    FILE* out = fopen(part.c_str(), "we");
    bool good = out && fwrite(page.data(), 1, page.size(), out) == page.size();
    if (out) good = (fclose(out) == 0) && good;
    if (good && rename(part.c_str(), mPath.c_str()) == 0) return;
    const int error = errno;
    if (out) unlink(part.c_str());
    refuse(mPath, std::string("cannot be written: ") + strerror(error));
}

}  // namespace orvel::probe
