// Entry point of kroveld (start-up comes with the application shell).
int main() { return 0; }
