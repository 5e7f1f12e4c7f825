#include <qvsysbase/qvsysbase.h>

#include <iostream>

int main() {
  try {
    throw qvsysbase::OrvelException("consumer", "main", 1, "$Revision: #1 $", "12.00");
  } catch (const qvsysbase::OrvelException& e) {
    e.getDetails(std::cout);
  }
  return 0;
}
