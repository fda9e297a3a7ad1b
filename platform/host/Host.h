#pragma once
// Everything of the simulation host that the report generator uses.
#include "platform/host/DesignSession.h"
#include "platform/host/HostFunctions.h"
#include "platform/host/HostServices.h"
#include "platform/host/Study.h"
