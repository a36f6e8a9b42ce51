#pragma once

/// What became of a store's attempt to read its table.
enum class LoadState {
    Loaded,
    Locked, ///< Another program had locked the file: LoadRetry tries again.
    Failed, ///< For any other reason; a store does not try again by itself.
};
