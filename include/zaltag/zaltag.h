#pragma once

// The whole library.

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALError.h>
#include <zaltag/base/ZALJSONValue.h>
#include <zaltag/base/ZALProgrammingError.h>
#include <zaltag/base/ZALTagDecodeGRP1FrameData.h>
#include <zaltag/base/ZALTagSyncSafeInteger.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/id3/ZALTagAIFF.h>
#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/platform/ZALFileSystem.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/platform/ZALImage.h>
#include <zaltag/platform/ZALJSON.h>
#include <zaltag/platform/ZALTagCloudFileResolver.h>
#include <zaltag/records/ZALTagBeatGrid.h>
#include <zaltag/records/ZALTagCuePoint.h>
#include <zaltag/records/ZALTagCuePoints.h>
#include <zaltag/records/ZALTagCustomProperty.h>
#include <zaltag/records/ZALTagEnergy.h>
#include <zaltag/records/ZALTagKey.h>
#include <zaltag/records/ZALTagRecordData.h>
#include <zaltag/records/ZALTagVelvetCascade.h>
#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoCuePoint.h>
#include <zaltag/serato/ZALTagSeratoCuePointOld.h>
#include <zaltag/serato/ZALTagSeratoGrid.h>
#include <zaltag/serato/ZALTagSeratoGridPoint.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>
#include <zaltag/tag/ZALTag.h>
#include <zaltag/tag/ZALTagComment.h>
#include <zaltag/tag/ZALTagImageDictionary.h>
#include <zaltag/tag/ZALTagPathNames.h>
