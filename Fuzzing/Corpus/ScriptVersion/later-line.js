/*
 * x
 */
// Quorvel 1.0 beta (é)
// Quorvel 2.js