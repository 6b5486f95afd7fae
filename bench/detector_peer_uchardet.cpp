#include <uchardet/uchardet.h>

#include "bench/detector_peer.h"

namespace ksv_bench {
namespace {

class Uchardet : public DetectorPeer {
 public:
  Uchardet() : handle_(uchardet_new()) {}
  ~Uchardet() override { uchardet_delete(handle_); }

  const char* name() const override { return "uchardet"; }
  bool detect(const char* text, size_t length) override {
    uchardet_reset(handle_);
    uchardet_handle_data(handle_, text, length);
    uchardet_data_end(handle_);
    return *uchardet_get_charset(handle_) != '\0';
  }

 private:
  const uchardet_t handle_;
};

}  // namespace

std::unique_ptr<DetectorPeer> DetectorPeer::open() { return std::make_unique<Uchardet>(); }

}  // namespace ksv_bench
