// Image libraries as peers: each resizes one image to another, the same method on the same pixels.
#ifndef QVR_BENCH_IMAGE_PEERS_H
#define QVR_BENCH_IMAGE_PEERS_H

#include <functional>
#include <string>
#include <vector>

#include "bench/bench.h"

namespace bench {

struct Frame {
    void* pixels;
    int width, height;
};

// One kind of resize. Steps are whole rows; float images have one channel.
struct ResizeJob {
    int method; // a selector, qvriAntialias with it
    bool isFloat;
    int channels;
    Frame src, dst;
    int rowBytes(int width) const { return width * channels * (isFloat ? 4 : 1); }
    bool enlarges() const { return dst.width >= src.width; }
};

struct ResizePeer {
    std::string name;
    std::function<void()> run;
    std::function<void()> end;
    double steps; // of integers by which it may differ; negative: not compared
};

// What the installed libraries offer for the job. Where another slot than the machine's own is in force, zimg and
// libyuv are held to its level, and the others, which cannot be, stay away.
void zimgPeer(const ResizeJob& job, std::vector<ResizePeer>& peers);
void stbPeer(const ResizeJob& job, std::vector<ResizePeer>& peers);
void vipsPeer(const ResizeJob& job, std::vector<ResizePeer>& peers);
void yuvPeer(const ResizeJob& job, std::vector<ResizePeer>& peers);

} // namespace bench

#endif
