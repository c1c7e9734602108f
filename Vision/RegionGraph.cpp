#include "Vision/RegionGraph.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <queue>
#include <utility>

namespace stillwick {
namespace {

cv::Mat1f gradientStrength(const cv::Mat3f& lab) {
    cv::Mat1f lightness;
    cv::extractChannel(lab, lightness, 0);
    cv::Mat1f dx;
    cv::Mat1f dy;
    cv::Sobel(lightness, dx, CV_32F, 1, 0, 3, 1.0 / 8, 0, cv::BORDER_REPLICATE);
    cv::Sobel(lightness, dy, CV_32F, 0, 1, 3, 1.0 / 8, 0, cv::BORDER_REPLICATE);
    cv::Mat1f strength;
    cv::magnitude(dx, dy, strength);
    return strength;
}

void sumPixels(const WorkingPicture& picture, RegionGraph& graph) {
    const cv::Mat1f gradient = gradientStrength(picture.lab);
    const cv::Size size = picture.lab.size();
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            Region& region =
                graph.regions[static_cast<std::size_t>(graph.superpixels.labels(y, x))];
            region.colour += picture.lab(y, x);
            region.texture += gradient(y, x);
            region.centre += cv::Point2f(static_cast<float>(x), static_cast<float>(y));
            region.share += 1;
            const bool edge = x == 0 || y == 0 || x == size.width - 1 || y == size.height - 1;
            const bool hidden = picture.visible(y, x) == 0;
            const bool corner = x == 0 || x == size.width - 1;
            region.framePixels += edge || hidden ? 1.0F : 0.0F;
            region.lowerFramePixels += y == size.height - 1 && !corner && !hidden ? 1.0F : 0.0F;
            region.sharpness = std::max(region.sharpness, gradient(y, x));
        }
}

void turnSumsIntoMeans(cv::Size size, RegionGraph& graph) {
    const cv::Point2f middle(static_cast<float>(size.width - 1) / 2,
                             static_cast<float>(size.height - 1) / 2);
    const auto longSide = static_cast<float>(std::max(size.width, size.height));
    for (Region& region : graph.regions) {
        region.colour /= region.share;
        region.texture /= region.share;
        region.centre = (region.centre / region.share - middle) / longSide;
        region.share /= static_cast<float>(size.area());
        graph.framePixels += region.framePixels;
        graph.lowerFramePixels += region.lowerFramePixels;
    }
}

void linkNeighbours(RegionGraph& graph) {
    const cv::Mat1i& labels = graph.superpixels.labels;
    const auto link = [&graph](int a, int b) {
        if (a == b)
            return;
        graph.regions[static_cast<std::size_t>(a)].neighbours.push_back(b);
        graph.regions[static_cast<std::size_t>(b)].neighbours.push_back(a);
    };
    for (int y = 0; y < labels.rows; ++y)
        for (int x = 0; x < labels.cols; ++x) {
            if (x + 1 < labels.cols)
                link(labels(y, x), labels(y, x + 1));
            if (y + 1 < labels.rows)
                link(labels(y, x), labels(y + 1, x));
        }
    for (Region& region : graph.regions) {
        std::sort(region.neighbours.begin(), region.neighbours.end());
        region.neighbours.erase(std::unique(region.neighbours.begin(), region.neighbours.end()),
                                region.neighbours.end());
    }
}

cv::Mat1f colourDistances(const std::vector<Region>& regions) {
    const auto count = static_cast<int>(regions.size());
    cv::Mat1f distances(count, count, 0.0F);
    for (int i = 0; i < count; ++i)
        for (int j = 0; j < i; ++j)
            distances(i, j) = distances(j, i) =
                static_cast<float>(cv::norm(regions[static_cast<std::size_t>(i)].colour -
                                            regions[static_cast<std::size_t>(j)].colour));
    return distances;
}

std::vector<std::vector<int>> linksWithFrame(const RegionGraph& graph) {
    std::vector<std::vector<int>> links;
    std::vector<int> frame;
    for (int i = 0; i < graph.count(); ++i) {
        links.push_back(graph.regions[static_cast<std::size_t>(i)].neighbours);
        if (graph.regions[static_cast<std::size_t>(i)].touchesFrame())
            frame.push_back(i);
    }
    for (const int i : frame)
        links[static_cast<std::size_t>(i)].insert(links[static_cast<std::size_t>(i)].end(),
                                                  frame.begin(), frame.end());
    return links;
}

} // namespace

RegionGraph regionGraphOf(const WorkingPicture& picture, int wanted) {
    RegionGraph graph;
    graph.superpixels = superpixelsOf(picture.lab, wanted);
    graph.regions.resize(static_cast<std::size_t>(graph.superpixels.count));
    sumPixels(picture, graph);
    turnSumsIntoMeans(picture.lab.size(), graph);
    linkNeighbours(graph);
    graph.colourDistance = colourDistances(graph.regions);
    return graph;
}

cv::Mat1f geodesicDistances(const RegionGraph& graph, float tolerance) {
    const auto links = linksWithFrame(graph);
    cv::Mat1f result(graph.count(), graph.count(), std::numeric_limits<float>::max());
    using Entry = std::pair<float, int>;
    for (int start = 0; start < graph.count(); ++start) {
        float* distance = result[start];
        std::priority_queue<Entry, std::vector<Entry>, std::greater<>> open;
        distance[start] = 0;
        open.emplace(0.0F, start);
        while (!open.empty()) {
            const auto [length, at] = open.top();
            open.pop();
            if (length > distance[at])
                continue;
            for (const int to : links[static_cast<std::size_t>(at)]) {
                const float next =
                    length + std::max(0.0F, graph.colourDistance(at, to) - tolerance);
                if (next < distance[to]) {
                    distance[to] = next;
                    open.emplace(next, to);
                }
            }
        }
    }
    return result;
}

} // namespace stillwick
