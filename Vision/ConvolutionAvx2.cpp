#include "Vision/ConvolutionKernel.h"

namespace stillwick {

void convolveAvx2(const ConvolutionTask& task) {
    convolveAll<8, 6, 1>(task);
}

} // namespace stillwick
