// Everything that a host uses of the update engine.
#pragma once

#include "FileObject.h"
#include "HttpDownload.h"
#include "IBackup.h"
#include "IDownload.h"
#include "IGetConnection.h"
#include "IGetServerId.h"
#include "IInstaller.h"
#include "IReleaseHistory.h"
#include "IVersion.h"
#include "IVersionRequest.h"
#include "LocalDownload.h"
#include "OrvBackup.h"
#include "OrvInstaller.h"
#include "OrvVersion.h"
#include "VersionRequest.h"
#include "VersionService.h"
