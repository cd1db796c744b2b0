#pragma once

/// What writing a file promises beyond the process's own end.
enum class QVLDurability {
    /// Outlives the loss of power too.
    Durable,
    /// Costs no wait for the disk. After a loss of power the file may be the old one, the new one or, on some file
    /// systems, empty.
    Fleeting
};
