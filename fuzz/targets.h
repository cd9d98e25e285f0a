// The fuzz targets: each takes any bytes and must survive them. libFuzzer drives them one by one
// (fuzz/libfuzzer.cpp); the tests replay the checked-in corpora through all of them (fuzz/replay_test.cpp).
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvfuzz {

void BinaryReader(const std::uint8_t* bytes, std::size_t size);
void CssParser(const std::uint8_t* bytes, std::size_t size);
void StringDecoding(const std::uint8_t* bytes, std::size_t size);
void Base64(const std::uint8_t* bytes, std::size_t size);
void Scanner(const std::uint8_t* bytes, std::size_t size);
void ArchiveItems(const std::uint8_t* bytes, std::size_t size);
void ContainerDecode(const std::uint8_t* bytes, std::size_t size);

}  // namespace qvfuzz
