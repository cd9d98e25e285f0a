// Plain reference of the sliding dictionary and of the token list that is made with it: every rule written
// down as it is stated, one step after the other, with no shortcut. The fast code is compared with this.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace model {

class SlidingDictionary {
public:
    SlidingDictionary() : window_(16384, 0), chain_(16384, -1), heads_(65536, -1) {}

    void AppendValue(std::uint8_t value) {
        window_[Index(base_ + count_)] = value;
        if (count_ == 0) {
            count_ = 1;
            return;
        }
        const int start = base_ + count_ - 1;
        Link(start);
        if (count_ < 8192) {
            ++count_;
            return;
        }
        ++base_;
        if (base_ == 8192) Rebase();
    }

    bool SearchSlideDic(const std::uint8_t* lookahead, std::size_t size, std::uint16_t* offset,
                        std::uint8_t* length) const {
        if (size < 3 || count_ < 3) return false;
        int position = heads_[static_cast<std::size_t>(lookahead[0] * 256 + lookahead[1])];
        if (position == -1) return false;

        const int end = base_ + count_;
        int best = 0;
        int bestPosition = 0;
        for (; position != -1; position = chain_[Index(position)]) {
            if (position < base_) continue;
            if (position >= end) break;
            int k = 0;
            bool longest = false;
            for (;; ++k) {
                if (best + position + 1 >= end) break;
                if (k == 253) {
                    longest = true;
                    break;
                }
                if (k + 2 + base_ >= end) break;
                if (static_cast<std::size_t>(k) == size - 2) break;
                if (!Equal(position + 2 + k, lookahead[2 + k])) break;
            }
            if (k + 2 <= best) continue;
            best = k + 2;
            bestPosition = position;
            if (longest) break;
        }
        if (best < 3) return false;
        *offset = static_cast<std::uint16_t>(bestPosition - base_);
        *length = static_cast<std::uint8_t>(best);
        return true;
    }

private:
    static std::size_t Index(int position) { return static_cast<std::size_t>(position); }

    std::size_t KeyAt(int position) const {
        return static_cast<std::size_t>(window_[Index(position)]) * 256 + window_[Index(position + 1)];
    }

    // What lies behind the live end (zeros, later stale bytes) is compared as it is; there is nothing behind
    // the window itself.
    bool Equal(int position, std::uint8_t value) const {
        return position < 16384 && window_[Index(position)] == value;
    }

    void Link(int start) {
        int& head = heads_[KeyAt(start)];
        if (head == -1) {
            head = start;
            return;
        }
        int last = head;
        while (chain_[Index(last)] != -1)
            last = chain_[Index(last)];
        chain_[Index(last)] = start;
    }

    void Rebase() {
        base_ = 0;
        for (int& head : heads_)
            head = -1;
        for (int i = 0; i <= 8190; ++i) {
            int& head = heads_[KeyAt(i)];
            if (head == -1) head = i;
        }
        for (std::size_t j = 0; j < 8192; ++j) {
            chain_[j] = chain_[j + 8192] == -1 ? -1 : chain_[j + 8192] - 8192;
            chain_[j + 8192] = -1;
        }
    }

    std::vector<std::uint8_t> window_;
    int base_ = 0;
    int count_ = 0;
    std::vector<int> chain_;
    std::vector<int> heads_;
};

/// The token list of one chunk: a literal is its byte; a match is length + 253, then the offset.
inline std::vector<std::uint16_t> Tokenize(const std::uint8_t* bytes, std::size_t size) {
    std::vector<std::uint16_t> tokens;
    SlidingDictionary dictionary;
    for (std::size_t p = 0; p < size;) {
        std::uint16_t offset = 0;
        std::uint8_t length = 0;
        const bool found = dictionary.SearchSlideDic(bytes + p, size - p, &offset, &length);
        dictionary.AppendValue(bytes[p]);
        if (found) {
            tokens.push_back(static_cast<std::uint16_t>(length + 253));
            tokens.push_back(offset);
            p += length;
        } else {
            tokens.push_back(bytes[p]);
            p += 1;
        }
    }
    return tokens;
}

}  // namespace model
