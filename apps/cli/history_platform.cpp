#include "apps/cli/history_platform.h"

namespace veyla {

HistoryPlatform::HistoryPlatform(KeyValueStore& store, Sharing& sharing)
    : platform_({.log = log_,
                 .mainQueue = queue_,
                 .clock = queue_,
                 .camera = camera_,
                 .realFft = realFft_,
                 .store = store,
                 .healthStore = healthStore_,
                 .resources = resources_,
                 .json = json_,
                 .jsonWriter = jsonWriter_,
                 .device = device_,
                 .dates = text_,
                 .numbers = text_,
                 .regularExpressions = text_,
                 .characters = text_,
                 .uuids = uuids_,
                 .measuringDisplay = display_,
                 .alertView = alerts_,
                 .screens = screens_,
                 .sharing = sharing}) {}

}  // namespace veyla
