#include "editor/ORVEditingOptions.h"

#include "core/MyPreferences.h"

ORVEditingOptions ORVEditingOptions::fromPreferences()
{
    const MyPreferences *prefs = MyPreferences::sharedInstance();
    ORVEditingOptions o;
    o.isSpaceInsteadTabs = prefs->isSpaceInsteadTabs();
    o.isDisableAutoCorrectOrderListNumber = prefs->isDisableAutoCorrectOrderListNumber();
    return o;
}
