// Everything of the network layer.
#pragma once

#include "Public/Network/HTTPClient.h"
#include "Public/Network/IOWorker.h"
#include "Public/Network/NetAddr.h"
