#include "bench/detector_peer.h"

namespace ksv_bench {

std::unique_ptr<DetectorPeer> DetectorPeer::open() { return nullptr; }

}  // namespace ksv_bench
