#pragma once

namespace tidwen::returnKey {

/// From now on a Return that is held down counts once, and `waitForPause` holds. For the whole program.
void guard();

/// Return does nothing until half a second has passed in which it was not pressed: who presses it again and
/// again has not read what has come on the screen since. Called when that is shown.
void waitForPause();

/// What was shown is gone again, by another way than Return: it may mean what is shown now.
void waitNoLonger();

} // namespace tidwen::returnKey
