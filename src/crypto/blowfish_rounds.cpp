#include "crypto/blowfish_rounds.h"

namespace qv {
namespace {

// Four key bytes, the first one on top; behind the key's last byte comes its first again.
class CyclicKey {
public:
    CyclicKey(const void* key, std::size_t size) noexcept
        : bytes_(static_cast<const std::uint8_t*>(key)), size_(size) {}

    std::uint32_t NextWord() noexcept {
        std::uint32_t word = 0;
        for (int i = 0; i < 4; ++i) {
            word = word << 8 | bytes_[next_];
            if (++next_ == size_) next_ = 0;
        }
        return word;
    }

private:
    const std::uint8_t* bytes_;
    std::size_t size_;
    std::size_t next_ = 0;
};

}  // namespace

void ExpandBlowfishKey(const void* key, std::size_t size, BlowfishSubstitutes& substitutes,
                       BlowfishSubkeys& subkeys) noexcept {
    substitutes = kBlowfishInitialSubstitutes;
    subkeys = kBlowfishInitialSubkeys;
    CyclicKey cyclic(key, size);
    for (std::uint32_t& subkey : subkeys)
        subkey ^= cyclic.NextWord();

    const BlowfishTables tables = {substitutes.data(), subkeys.data()};
    BlowfishHalves x = {0, 0};
    const auto replace = [&](auto& words) {
        for (std::size_t i = 0; i < words.size(); i += 2) {
            x = EncipherBlowfish(tables, x);
            words[i] = x.left;
            words[i + 1] = x.right;
        }
    };
    replace(subkeys);
    replace(substitutes);
}

}  // namespace qv
