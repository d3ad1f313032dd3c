// Everything of the message queue.
#pragma once

#include "Tarnwick/MQ/Bus.h"
#include "Tarnwick/MQ/MQConnection.h"
#include "Tarnwick/MQ/MQDiscover.h"
#include "Tarnwick/MQ/MQDispatcher.h"
#include "Tarnwick/MQ/MQMessage.h"
#include "Tarnwick/MQ/TWMQClient.h"
#include "Tarnwick/MQ/TWMQServer.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"
#include "Tarnwick/MQ/TWServerInfo.h"
