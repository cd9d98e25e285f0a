// Plain references of the bit streams: one bit after the other, over a plain vector of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace model {

class InputBits {
public:
    InputBits(const std::vector<std::uint8_t>& data, std::uint64_t numberOfBits)
        : data_(&data), numberOfBits_(numberOfBits) {}

    int GetBits(std::uint8_t* buffer, unsigned long bits, unsigned long* done, bool exact) {
        for (unsigned long i = 0; i < (bits + 7) / 8; ++i)
            buffer[i] = 0;
        unsigned long read = 0;
        while (read < bits && !IsEnd()) {
            const bool bit = ((*data_)[static_cast<std::size_t>(byteIndex_)] & (0x80 >> bitIndex_)) != 0;
            std::uint8_t& out = buffer[read / 8];
            if (mode_ != 0) {
                if (bit) out = static_cast<std::uint8_t>(out | (0x80 >> (read % 8)));
            } else {
                out = static_cast<std::uint8_t>((out << 1) | (bit ? 1 : 0));
            }
            ++read;
            if (++bitIndex_ == 8) {
                bitIndex_ = 0;
                ++byteIndex_;
            }
        }
        if (done != nullptr) *done = read;
        return exact && read < bits ? -500 : 0;
    }

    int FutureBits(std::uint8_t* buffer, unsigned long bits, unsigned long* done, bool exact) {
        const long long old = GetMarker();
        const int result = GetBits(buffer, bits, done, exact);
        SetMarker(0, old);
        return result;
    }

    bool GetOneBit() {
        std::uint8_t byte = 0;
        GetBits(&byte, 1, nullptr, true);
        return byte != 0;
    }

    long long GetMarker() const { return static_cast<long long>(byteIndex_ * 8 + bitIndex_); }

    long long SetMarker(int origin, long long offset) {
        const auto bits = static_cast<long long>(numberOfBits_);
        long long target = GetMarker();
        if (origin == 0) target = offset < 0 ? 0 : offset;
        if (origin == 1) target = offset < 0 && -offset > bits ? 0 : bits + offset;
        if (origin == 2) target += offset;
        auto position = static_cast<std::uint64_t>(target);
        if (position > numberOfBits_) position = numberOfBits_;
        byteIndex_ = position / 8;
        bitIndex_ = static_cast<unsigned>(position % 8);
        return static_cast<long long>(position);
    }

    bool IsEnd() const {
        return byteIndex_ >= data_->size() || static_cast<std::uint64_t>(GetMarker()) >= numberOfBits_;
    }

    void SetMode(int mode) { mode_ = mode; }

private:
    const std::vector<std::uint8_t>* data_;
    std::uint64_t numberOfBits_;
    std::uint64_t byteIndex_ = 0;
    unsigned bitIndex_ = 0;
    int mode_ = 1;
};

class OutputBits {
public:
    OutputBits(std::vector<std::uint8_t>& data, std::uint64_t numberOfBits)
        : data_(&data), numberOfBits_(numberOfBits) {
        if (numberOfBits != 0) current_ = ByteAt(0);
    }

    ~OutputBits() { Flush(); }
    OutputBits(const OutputBits&) = delete;
    OutputBits& operator=(const OutputBits&) = delete;

    void PutOneBit(bool bit) {
        if (mode_ != 0) {
            const int mask = 0x80 >> bitIndex_;
            current_ = static_cast<std::uint8_t>(bit ? current_ | mask : current_ & ~mask);
        } else {
            current_ = static_cast<std::uint8_t>((current_ << 1) | (bit ? 1 : 0));
        }
        if (++bitIndex_ == 8) {
            Flush();
            bitIndex_ = 0;
            ++byteIndex_;
            current_ = ByteAt(byteIndex_);
        }
        RaiseNumberOfBits();
    }

    void PutBits(const std::uint8_t* buffer, unsigned long bits, unsigned long* done) {
        for (unsigned long i = 0; i < bits; ++i)
            PutOneBit((buffer[i / 8] & (0x80 >> (i % 8))) != 0);
        RaiseNumberOfBits();
        if (done != nullptr) *done = bits;
    }

    /// PutUInt8, PutUInt16 and PutUInt32 for a width of 8, 16 and 32.
    void PutUInt(unsigned width, std::uint32_t value, unsigned long bits, unsigned long* done) {
        auto wide = static_cast<std::uint64_t>(value) & ((std::uint64_t{1} << width) - 1);
        if (mode_ == 1) wide <<= width - bits;
        std::uint8_t bytes[4] = {};
        for (unsigned i = 0; i < width / 8; ++i)
            bytes[i] = static_cast<std::uint8_t>(wide >> (width - 8 - 8 * i));
        PutBits(bytes, bits, done);
    }

    void Flush() {
        if (byteIndex_ < data_->size()) {
            (*data_)[static_cast<std::size_t>(byteIndex_)] = current_;
        } else {
            data_->push_back(current_);
        }
    }

    long long GetMarker() const { return static_cast<long long>(byteIndex_ * 8 + bitIndex_); }

    long long SetMarker(int origin, long long offset) {
        Flush();
        const auto bits = static_cast<long long>(numberOfBits_);
        long long target = GetMarker();
        if (origin == 0) target = offset < 0 ? 0 : offset;
        if (origin == 1) target = offset < 0 && -offset > bits ? 0 : bits + offset;
        if (origin == 2) target += offset;
        auto position = static_cast<std::uint64_t>(target);
        if (position > numberOfBits_) position = numberOfBits_;
        byteIndex_ = position / 8;
        bitIndex_ = static_cast<unsigned>(position % 8);
        current_ = ByteAt(byteIndex_);
        return static_cast<long long>(position);
    }

    std::uint64_t GetNumberOfBits() const { return numberOfBits_; }
    void SetNumberOfBits(std::uint64_t bits) { numberOfBits_ = bits; }
    void SetMode(int mode) { mode_ = mode; }

private:
    std::uint8_t ByteAt(std::uint64_t index) const {
        return index < data_->size() ? (*data_)[static_cast<std::size_t>(index)] : std::uint8_t{0};
    }

    void RaiseNumberOfBits() {
        const auto marker = static_cast<std::uint64_t>(GetMarker());
        if (marker > numberOfBits_) numberOfBits_ = marker;
    }

    std::vector<std::uint8_t>* data_;
    std::uint64_t numberOfBits_;
    std::uint64_t byteIndex_ = 0;
    unsigned bitIndex_ = 0;
    std::uint8_t current_ = 0;
    int mode_ = 1;
};

}  // namespace model
