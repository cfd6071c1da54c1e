// Memory shortage on request: this program's calls of calloc are counted, and one of them can be made to fail.
#pragma once

// Calls of calloc since the last reset.
int calloc_calls();
void reset_calloc_calls();

// Lets the nth call of calloc from now on fail (1 is the next one) for as long as the object lives.
struct calloc_failure {
    explicit calloc_failure(int nth);
    ~calloc_failure();
    calloc_failure(const calloc_failure &) = delete;
    calloc_failure &operator=(const calloc_failure &) = delete;
};
