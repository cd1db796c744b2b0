// Quorvel_1
// quorvel 1
 // Quorvel 1
// Quorvel
