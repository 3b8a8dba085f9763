#include "md5.h"

#include <stdexcept>

namespace orvel::probe {

Md5Hasher::Md5Hasher()
    : mDigest(EVP_MD_fetch(nullptr, "MD5", nullptr)), mContext(EVP_MD_CTX_new()) {
    if (!mDigest || !mContext) throw std::runtime_error("libcrypto offers no MD5 here");
}

Md5 Md5Hasher::of(const void* data, size_t size) {
    Md5 result{};
    if (EVP_DigestInit_ex2(mContext.get(), mDigest.get(), nullptr) != 1 ||
        EVP_DigestUpdate(mContext.get(), data, size) != 1 ||
        EVP_DigestFinal_ex(mContext.get(), result.data(), nullptr) != 1) {
        throw std::runtime_error("libcrypto failed to hash a sample");
    }
    return result;
}

}  // namespace orvel::probe
