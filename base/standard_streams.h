#pragma once

// To be called by a program before it opens any file. A file opened later must not get the number
// of a standard stream that the caller has closed, or lines for that stream would go into it. What
// takes the stream's place cannot be written to, so that output nobody gets still ends in failure.
void occupy_standard_streams();
