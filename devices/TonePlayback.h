#pragma once

namespace tavrelin {

/// Plays a tone that rises from 500 Hz for some 5 s, and waits for its end; reports the sizes in
/// use and the progress on standard output. An underrun and a write that fails are reported and go
/// on. False when the device cannot be opened, set up or closed.
bool PlayRisingTone();

} // namespace tavrelin
