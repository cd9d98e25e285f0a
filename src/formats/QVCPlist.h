// The property-list writer: one pass from the collections to the text.
#pragma once

#include <string_view>
#include <vector>

#include "formats/container_path.h"
#include "formats/data_writer.h"
#include "runtime/Owned.h"

class QVCPlist final {
public:
    // The property list of the root, or nothing when an object in it cannot be written. Throws
    // std::bad_alloc. A writer serves one list.
    [[nodiscard]] qv::Owned CreatePlistData(void* root);

private:
    // An array or a dictionary whose objects are being written.
    struct OpenContainer {
        void* container;
        bool isDictionary;
        unsigned long count;
        unsigned long next;
    };

    // Each writes the node for an object; false when it cannot be written. Those of containers write the
    // beginning and leave the rest to WriteOpenContainers, so that depth costs no stack of the thread.
    [[nodiscard]] bool CreateNode(void* object);
    [[nodiscard]] bool CreateArrayNode(void* array);
    [[nodiscard]] bool CreateDictionaryNode(void* dictionary);
    [[nodiscard]] bool CreateStringNode(void* string);
    [[nodiscard]] bool CreateNumberNode(void* number);
    [[nodiscard]] bool CreateDataNode(void* data);
    [[nodiscard]] bool CreateDateNode(void* date);

    [[nodiscard]] bool Open(const OpenContainer& container);
    [[nodiscard]] bool WriteOpenContainers();
    [[nodiscard]] bool WriteNextObject(OpenContainer& container);
    void CloseContainer();

    void WriteElement(std::string_view startTag, std::string_view text, std::string_view endTag);
    void WriteInteger(long long value);
    void WriteReal(double value, int decimalPlaces);
    void WriteUnsigned(unsigned long long value);

    qv::DataWriter out_;
    qv::ContainerPath path_;
    std::vector<OpenContainer> open_;
};
