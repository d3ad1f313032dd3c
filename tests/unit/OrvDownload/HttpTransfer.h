// The transfers from the cloud that the tests watch.
#pragma once

#include "HttpTransferFixture.h"

namespace support {

/// A transfer with a place in memory that serves as the key of a waiter.
class HttpTransfer : public HttpTransferFixture {
protected:
    int mFirst = 0;
};

}  // namespace support
