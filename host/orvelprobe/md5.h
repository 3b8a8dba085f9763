// MD5 over one block of bytes, for a hash per sample.
#pragma once

#include <openssl/evp.h>

#include <memory>

#include "report.h"

namespace orvel::probe {

// Keeps its context, so that a hash costs no allocation. One thread.
class Md5Hasher {
  public:
    Md5Hasher();  // throws std::runtime_error where the library offers no MD5
    Md5 of(const void* data, size_t size);

  private:
    struct Free {
        void operator()(EVP_MD* digest) const { EVP_MD_free(digest); }
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD, Free> mDigest;
    std::unique_ptr<EVP_MD_CTX, Free> mContext;
};

}  // namespace orvel::probe
