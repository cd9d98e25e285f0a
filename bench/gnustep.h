// GNUstep's objects, reached through the Objective-C runtime's own C functions: each message is looked up and
// called as compiled Objective-C does it.
#pragma once

#include <objc/message.h>
#include <objc/runtime.h>

#include "bench.h"

namespace bench {

// A selector, looked up once.
class Message {
public:
    explicit Message(const char* name) : selector_(sel_registerName(name)) {}

    template <class... Arguments>
    id operator()(id receiver, Arguments... arguments) const {
        return Send<id>(receiver, arguments...);
    }
    // For messages that answer a count.
    [[nodiscard]] unsigned long Count(id receiver) const { return Send<unsigned long>(receiver); }

private:
    template <class Result, class... Arguments>
    Result Send(id receiver, Arguments... arguments) const {
        using Method = Result (*)(id, SEL, Arguments...);
        const auto implementation = reinterpret_cast<void (*)()>(objc_msg_lookup(receiver, selector_));
        return reinterpret_cast<Method>(implementation)(receiver, selector_, arguments...);
    }

    SEL selector_;
};

// A class, looked up once. Messages to a class that is not there would do nothing, and very fast.
class PeerClass {
public:
    explicit PeerClass(const char* name) : class_(reinterpret_cast<id>(objc_getClass(name))) {
        Require(class_ != nil, name);
    }

    [[nodiscard]] id NewObject() const { return initialise_(allocate_(class_)); }

private:
    id class_;
    Message allocate_{"alloc"};
    Message initialise_{"init"};
};

}  // namespace bench
