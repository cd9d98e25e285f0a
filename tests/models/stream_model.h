// Plain models of the file stream and the data stream: the steps of each operation one after another, over
// byte vectors, without any of the library's code.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace qvmodel {

using Bytes = std::vector<unsigned char>;

inline constexpr int kNoError = 0;
inline constexpr int kBadArgument = -2;
inline constexpr int kNoMemory = -4;
inline constexpr int kNoFile = -100;
inline constexpr int kNoPermission = -104;
inline constexpr int kEndOfFile = -106;
inline constexpr int kWriteShort = -501;
inline constexpr int kReadShort = -502;

// An open file: bytes and a marker.
struct File {
    Bytes bytes;
    std::int64_t marker = 0;
    bool isReadOnly = false;

    int SetMarker(int origin, std::int64_t offset) {
        if (origin < 0 || origin > 2) return kBadArgument;
        const std::int64_t target = (origin == 1 ? static_cast<std::int64_t>(bytes.size()) : 0) + offset;
        if (target < 0) return kBadArgument;
        marker = target;
        return kNoError;
    }
    int Read(unsigned char* to, std::size_t size, std::size_t& done) {
        const std::size_t start = std::min(static_cast<std::size_t>(marker), bytes.size());
        done = std::min(size, bytes.size() - start);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(start), done, to);
        marker += static_cast<std::int64_t>(done);
        return done < size ? kEndOfFile : kNoError;
    }
    int Write(const unsigned char* from, std::size_t size, std::size_t& done) {
        if (isReadOnly) return kNoPermission;
        const std::size_t end = static_cast<std::size_t>(marker) + size;
        if (size > 0 && end > bytes.size()) bytes.resize(end);
        std::copy_n(from, size, bytes.begin() + static_cast<std::ptrdiff_t>(marker));
        marker += static_cast<std::int64_t>(size);
        done = size;
        return kNoError;
    }
};

struct FileStream {
    explicit FileStream(File& over) : file(over) {
        file.SetMarker(0, 0);
        Refill();
    }

    void Refill() {
        base = file.marker;
        position = 0;
        dirty = false;
        std::size_t done = 0;
        file.Read(buffer, 1024, done);
        length = done;
    }

    int Get(unsigned char* to, std::size_t size, std::size_t& done, bool exact) {
        const std::size_t n = std::min(length - position, size);
        std::copy_n(buffer + position, n, to);
        position += n;
        std::size_t count = n;
        int error = kNoError;
        if (n < size) {
            std::size_t direct = 0;
            error = file.Read(to + n, size - n, direct);
            count += direct;
        }
        if (position == length) {
            if (dirty) Flush();
            Refill();
        }
        done = count;
        return error == kEndOfFile && !exact ? kNoError : error;
    }

    int Put(const unsigned char* from, std::size_t size, std::size_t& done, bool exact) {
        const std::size_t n = std::min(1024 - position, size);
        std::copy_n(from, n, buffer + position);
        position += n;
        length = std::max(length, position);
        dirty = true;
        std::size_t count = n;
        if (position == 1024 && dirty) Flush();
        int error = kNoError;
        if (n < size) {
            std::size_t direct = 0;
            error = file.Write(from + n, size - n, direct);
            if (error == kNoError) count += direct;
        }
        if (position == 1024) Refill();
        done = count;
        if (error == kNoError && exact && count != size) return kWriteShort;
        return error;
    }

    void SetMarker(int origin, std::int64_t offset) {
        if (dirty) Flush();
        if (origin == 2) {
            origin = 0;
            offset += GetMarker();
        }
        file.SetMarker(origin, offset);
        Refill();
    }

    [[nodiscard]] std::int64_t GetMarker() const { return base + static_cast<std::int64_t>(position); }

    int Flush() {
        if (length > 0 && file.isReadOnly) {
            file.SetMarker(0, base + static_cast<std::int64_t>(length));
        } else if (length > 0) {
            std::size_t done = 0;
            file.SetMarker(0, base);
            file.Write(buffer, length, done);
        }
        dirty = false;
        return kNoError;
    }

    File& file;
    unsigned char buffer[1024] = {};
    std::size_t length = 0;
    std::size_t position = 0;
    bool dirty = false;
    std::int64_t base = 0;
};

// Overwrites from the offset; what does not fit goes to the end, also when the offset lies beyond it.
inline bool SetBytes(Bytes& data, const unsigned char* from, std::size_t offset, std::size_t length) {
    if (length == 0) return false;
    std::size_t inPlace = 0;
    if (data.size() > offset) inPlace = std::min(data.size() - offset, length);
    for (std::size_t i = 0; i < inPlace; ++i)
        data[offset + i] = from[i];
    data.insert(data.end(), from + inPlace, from + length);
    return true;
}

struct DataStream {
    explicit DataStream(Bytes& over) : data(over) {}

    int Get(unsigned char* to, std::size_t size, std::size_t& done, bool exact) {
        const std::size_t n = std::min(length - position, size);
        std::copy_n(buffer + position, n, to);
        position += n;
        std::size_t count = n;
        if (n < size) {
            // As many bytes as the buffer gave.
            const std::size_t start = std::min(static_cast<std::size_t>(base), data.size());
            const std::size_t direct = std::min(n, data.size() - start);
            std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(start), direct, to + n);
            base += static_cast<std::int64_t>(direct);
            count += direct;
        }
        if (position == length && dirty) Flush();
        done = count;
        return exact && count < size ? kReadShort : kNoError;
    }

    int Put(const unsigned char* from, std::size_t size, std::size_t& done, bool exact) {
        const std::size_t n = std::min(1024 - position, size);
        std::copy_n(from, n, buffer + position);
        position += n;
        length = std::max(length, position);
        dirty = true;
        std::size_t count = n;
        if (position == 1024 && dirty) Flush();
        int error = kNoError;
        if (n < size) {
            const std::size_t start = std::min(static_cast<std::size_t>(base), data.size());
            const std::size_t direct = std::min(size - n, data.size() - start);
            if (SetBytes(data, from + n, static_cast<std::size_t>(base), direct)) {
                base += static_cast<std::int64_t>(direct);
                count += direct;
            } else {
                error = kNoMemory;
            }
        }
        done = count;
        if (error == kNoError && exact && count != size) return kWriteShort;
        return error;
    }

    void SetMarker(int origin, std::int64_t offset) {
        const auto size = static_cast<std::int64_t>(data.size());
        if (dirty) Flush();
        std::int64_t target = offset;
        if (origin == 1) target = offset + size;
        if (origin == 2) target = offset + GetMarker();
        if (target < 0) target = 0;
        if (target > size) target = size;
        base = target;
    }

    [[nodiscard]] std::int64_t GetMarker() const { return base + static_cast<std::int64_t>(position); }

    int Flush() {
        if (length == 0) return 0;
        dirty = false;
        return SetBytes(data, buffer, static_cast<std::size_t>(base), length) ? 1 : 0;
    }

    Bytes& data;
    unsigned char buffer[1024] = {};
    std::size_t length = 0;
    std::size_t position = 0;
    bool dirty = false;
    std::int64_t base = 0;
};

// The stream over Data that has no oddities: bytes and a marker that stays among them.
struct MemoryStream {
    explicit MemoryStream(Bytes& over) : data(over) {}

    int Get(unsigned char* to, std::size_t size, std::size_t& done, bool exact) {
        const std::size_t start = std::min(marker, data.size());
        done = std::min(size, data.size() - start);
        std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(start), done, to);
        marker += done;
        return exact && done < size ? kReadShort : kNoError;
    }

    int Put(const unsigned char* from, std::size_t size, std::size_t& done) {
        marker = size > 0 ? std::min(marker, data.size()) : marker;
        SetBytes(data, from, marker, size);
        marker += size;
        done = size;
        return kNoError;
    }

    void SetMarker(int origin, std::int64_t offset) {
        std::int64_t target = offset;
        if (origin == 1) target = offset + static_cast<std::int64_t>(data.size());
        if (origin == 2) target = offset + static_cast<std::int64_t>(marker);
        marker = static_cast<std::size_t>(
            std::clamp<std::int64_t>(target, 0, static_cast<std::int64_t>(data.size())));
    }

    Bytes& data;
    std::size_t marker = 0;
};

}  // namespace qvmodel
