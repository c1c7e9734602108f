#include "Vision/ConvolutionKernel.h"

namespace stillwick {

void convolveAvx512(const ConvolutionTask& task) {
    convolveAll<16, 12, 2>(task);
}

} // namespace stillwick
