// Objects that show what a collection does with them.
#pragma once

#include <vector>

#include <QVFoundation/QVObject.h>

#include "runtime/Handle.h"
#include "runtime/QVCBase.h"

namespace qvtest {

// Tells when it dies. With a count of 1 after creation, as every object.
class Probe final : public QVCBase {
public:
    Probe(int name, std::vector<int>* deaths) : name_(name), deaths_(deaths) {}
    ~Probe() override { deaths_->push_back(name_); }
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDUnregistered; }

private:
    int name_;
    std::vector<int>* deaths_;
};

[[nodiscard]] inline void* CreateProbe(int name, std::vector<int>* deaths) {
    return qv::ToHandle(new Probe(name, deaths));
}

// Runs an action when it dies: for collections that are changed in the middle of their own work.
template <class Action>
class LastAct final : public QVCBase {
public:
    explicit LastAct(Action action) : action_(action) {}
    ~LastAct() override { action_(); }
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDUnregistered; }

private:
    Action action_;
};

template <class Action>
[[nodiscard]] void* CreateLastAct(Action action) {
    return qv::ToHandle(new LastAct<Action>(action));
}

// Twenty null objects that a test may put anywhere; each has a count of 1 of its own.
class Objects {
public:
    explicit Objects(std::size_t count = 20) {
        for (std::size_t i = 0; i < count; ++i)
            handles_.push_back(QVNullCreate());
    }
    Objects(const Objects&) = delete;
    Objects& operator=(const Objects&) = delete;
    ~Objects() {
        for (void* handle : handles_)
            QVRelease(handle);
    }

    [[nodiscard]] std::size_t Count() const { return handles_.size(); }
    [[nodiscard]] void* operator[](std::size_t index) const { return handles_[index]; }

private:
    std::vector<void*> handles_;
};

}  // namespace qvtest
