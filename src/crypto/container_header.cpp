#include "crypto/container_header.h"

#include <cstring>

#include "base/little_endian.h"

namespace qv {

const std::array<char, kContainerSignatureSize> kContainerSignature = {
    'A', '0', '7', '9', 'F', '0', '1', 'F', '8', 'F', '7', 'A', '4', '2', 'D', '2'};

ContainerHeaderBytes ContainerHeader::ToBytes() const noexcept {
    ContainerHeaderBytes bytes{};
    std::memcpy(bytes.data(), kContainerSignature.data(), kContainerSignatureSize);
    StoreLittle64(headerFeedbackCode, bytes.data() + 16);
    StoreLittle64(headerSize, bytes.data() + kHeaderSizeOffset);
    StoreLittle64(plaintextSize, bytes.data() + kPlaintextSizeOffset);
    for (std::size_t i = 0; i < fingerprint.size(); ++i)
        StoreLittle32(fingerprint[i], bytes.data() + 40 + 4 * i);
    StoreLittle64(bodyFeedbackCode, bytes.data() + 56);
    return bytes;
}

}  // namespace qv
