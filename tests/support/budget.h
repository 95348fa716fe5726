// The thread budget for the length of a scope.
#pragma once

#include "frame/threads.h"

class Budget {
public:
    explicit Budget(int n) : saved_(qvrNumThreadsValue()) { qvrSetNumThreads(n); }
    ~Budget() { qvrSetNumThreads(saved_); }
    Budget(const Budget&) = delete;
    Budget& operator=(const Budget&) = delete;

private:
    int saved_;
};
