#include "Vision/ConvolutionKernel.h"

namespace stillwick {

void convolvePlain(const ConvolutionTask& task) {
    convolveAll<4, 2, 1>(task);
}

} // namespace stillwick
