// GNUstep's objects, reached through the Objective-C runtime's own C functions: each message is looked up and
// called as compiled Objective-C does it.
#pragma once

#include <objc/message.h>
#include <objc/runtime.h>

namespace bench {

// A selector, looked up once.
class Message {
public:
    explicit Message(const char* name) : selector_(sel_registerName(name)) {}

    template <class Result = id, class... Arguments>
    Result operator()(id receiver, Arguments... arguments) const {
        const IMP implementation = objc_msg_lookup(receiver, selector_);
        return reinterpret_cast<Result (*)(id, SEL, Arguments...)>(implementation)(receiver, selector_,
                                                                                   arguments...);
    }

private:
    SEL selector_;
};

inline id ClassNamed(const char* name) {
    return reinterpret_cast<id>(objc_getClass(name));
}

inline id NewObject(const char* className) {
    static const Message allocate("alloc");
    static const Message initialise("init");
    return initialise(allocate(ClassNamed(className)));
}

}  // namespace bench
