#include "core/ManualPlayback.h"

#include "core/AVPlayer.h"
#include "store/HistoryStore.h"
#include "store/PlanStore.h"

void ManualPlayback::toggle(const Plan &plan, PlanStore &planStore, HistoryStore &historyStore,
                            AVPlayer &avPlayer)
{
    planStore.togglePlaying(plan);
    if (plan.isPlaying) {
        if (const auto &player = avPlayer.player.value())
            player->stop();
        historyStore.finishHistory();
    } else {
        avPlayer.play(plan.content, plan.isLoop);
        historyStore.finishHistory();
        historyStore.addHistory(plan.title);
        historyStore.deleteOldHistory();
    }
}
