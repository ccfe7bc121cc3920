#include "cli/terminal.h"
#include "program/this_mac.h"

int main(int count, char** words) {
    return tidwen::runTerminal(count, words,
                               {.feedKey = TIDWEN_FEED_KEY,
                                .feedAddress = TIDWEN_FEED_ADDRESS,
                                .openRunningMac = tidwen::thisMac()});
}
