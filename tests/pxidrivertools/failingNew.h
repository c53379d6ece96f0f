// The test program's operator new, which can refuse one request of the calling thread.
#pragma once

// From its making to its end, the Nth request (counted from 1) raises std::bad_alloc; 0 refuses
// none. One at a time in a thread.
class FailingNew {
public:
    explicit FailingNew(int request);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    // Requests made since.
    static int requests();
};
