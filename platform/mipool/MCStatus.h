// The outcome of one pooling operation: success, or the error code whose text
// GetPoolingErrorString gives. Every operation of a pooling computation returns one.
#pragma once

namespace MCCommon {

class MCStatus {
public:
  // Success.
  MCStatus() = default;
  // A failure with the given code; code 0 means success.
  explicit MCStatus(long errorCode) : _errorCode(errorCode) {}

  bool IsOK() const { return _errorCode == 0; }
  // 0 on success, else one of the codes in platform/mipool/PoolingErrors.h.
  long GetErrorCode() const { return _errorCode; }

private:
  long _errorCode = 0;
};

} // namespace MCCommon
