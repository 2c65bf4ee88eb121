#pragma once

// The preferences the editing commands follow. Taken from MyPreferences by
// the view when it is made and whenever a preference changes, so that the
// commands themselves read no global state.
struct ORVEditingOptions {
    bool isSpaceInsteadTabs = true;                   // Tab and indent use spaces (four per level)
    bool isDisableAutoCorrectOrderListNumber = false; // ordered lists keep the numbers as typed

    // The values of the process's preferences.
    static ORVEditingOptions fromPreferences();
};
