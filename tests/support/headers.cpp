// Compiles nothing but the headers that the test programs share.
int main() {}
