#include "bench/support/kernel.h"

#include <algorithm>

namespace ovix::bench {

namespace {

std::vector<SKernel>& Entered() {
    static std::vector<SKernel> kernels;
    return kernels;
}

}  // namespace

CKernelEntry::CKernelEntry(SKernel kernel) { Entered().push_back(std::move(kernel)); }

std::vector<SKernel> Kernels() {
    std::vector<SKernel> kernels = Entered();
    std::stable_sort(kernels.begin(), kernels.end(),
                     [](const SKernel& a, const SKernel& b) { return a.name < b.name; });
    return kernels;
}

}  // namespace ovix::bench
