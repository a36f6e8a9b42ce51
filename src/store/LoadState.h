#pragma once

/// The result of a store's attempt to read its table.
enum class LoadState {
    Loaded,
    Locked, ///< Another program holds a lock on the file: LoadRetry tries again.
    Failed, ///< Not read, for any other reason; not tried again.
};
