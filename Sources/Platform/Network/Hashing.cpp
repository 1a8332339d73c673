#include "Platform/Network/Hashing.h"

#include <openssl/evp.h>

#include <new>

namespace orvane::platform {

namespace {

// The library fails only if memory runs out.
class Hashing : public SHA256::Engine {
  public:
    Hashing() {
        if (!context_ || EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1)
            throw std::bad_alloc();
    }
    void add(std::string_view piece) override {
        if (EVP_DigestUpdate(context_.get(), piece.data(), piece.size()) != 1) throw std::bad_alloc();
    }
    std::array<std::uint8_t, SHA256::bytes> digest() override {
        std::array<std::uint8_t, SHA256::bytes> result{};
        if (EVP_DigestFinal_ex(context_.get(), result.data(), nullptr) != 1) throw std::bad_alloc();
        return result;
    }

  private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_{EVP_MD_CTX_new(), &EVP_MD_CTX_free};
};

} // namespace

std::unique_ptr<SHA256::Engine> makeSHA256() { return std::make_unique<Hashing>(); }

} // namespace orvane::platform
