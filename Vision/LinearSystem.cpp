#include "Vision/LinearSystem.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace stillwick {
namespace {

// The lower triangle L with L·Lᵀ = matrix, in double precision.
cv::Mat1d lowerTriangle(const cv::Mat1f& matrix) {
    cv::Mat1d lower(matrix.size(), 0.0);
    for (int i = 0; i < matrix.rows; ++i) {
        double* row = lower[i];
        for (int j = 0; j <= i; ++j) {
            const double* other = lower[j];
            const double rest = matrix(i, j) - std::inner_product(row, row + j, other, 0.0);
            row[j] = i == j ? std::sqrt(std::max(rest, 1e-12)) : rest / other[j];
        }
    }
    return lower;
}

} // namespace

cv::Mat1f solvedSystem(const cv::Mat1f& matrix, const cv::Mat1f& right) {
    const cv::Mat1d lower = lowerTriangle(matrix);
    cv::Mat1f result(right.size());
    cv::Mat1d x(1, matrix.rows);
    for (int column = 0; column < right.cols; ++column) {
        for (int i = 0; i < matrix.rows; ++i)
            x(i) = (right(i, column) - std::inner_product(lower[i], lower[i] + i, x[0], 0.0)) /
                   lower(i, i);
        for (int i = matrix.rows - 1; i >= 0; --i) {
            double sum = x(i);
            for (int j = i + 1; j < matrix.rows; ++j)
                sum -= lower(j, i) * x(j);
            x(i) = sum / lower(i, i);
        }
        for (int i = 0; i < matrix.rows; ++i)
            result(i, column) = static_cast<float>(x(i));
    }
    return result;
}

} // namespace stillwick
