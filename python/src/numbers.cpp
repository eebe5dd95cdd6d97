#include "numbers.h"

#include "arrays.h"

namespace ky::python {

bool IsInteger(PyObject* object) {
  return PyLong_Check(object) || (PyIndex_Check(object) && !IsArray(object));
}

bool IsNumber(PyObject* object) {
  return PyFloat_Check(object) || PyLong_Check(object) ||
         (PyNumber_Check(object) && !PyComplex_Check(object) && !IsArray(object));
}

bool IsSequence(PyObject* object, Py_ssize_t count) {
  if (!PySequence_Check(object) || PyUnicode_Check(object) || PyBytes_Check(object)) return false;
  if (IsArray(object)) {
    // An image of three rows is no colour.
    PyObject* const axes = PyObject_GetAttrString(object, "ndim");
    const bool flat = axes != nullptr && PyLong_AsLong(axes) == 1;
    Py_XDECREF(axes);
    if (!flat) return false;
  }
  const Py_ssize_t size = PySequence_Size(object);
  if (size < 0) PyErr_Clear();
  return size == count;
}

bool TakeInteger(PyObject* object, long long least, long long most, const Place& place,
                 long long& value) {
  if (!IsInteger(object)) return RaiseMismatch(PyExc_TypeError, place, "an integer", object);
  int overflow = 0;
  value = PyLong_AsLongLongAndOverflow(object, &overflow);
  if (value == -1 && PyErr_Occurred()) return false;
  if (overflow == 0 && value >= least && value <= most) return true;
  PyErr_Format(PyExc_ValueError, "%s(): %s must be from %lld to %lld, not %S", place.function,
               place.parameter, least, most, object);
  return false;
}

bool TakeNumber(PyObject* object, const Place& place, double& value) {
  if (!IsNumber(object)) return RaiseMismatch(PyExc_TypeError, place, "a number", object);
  value = PyFloat_AsDouble(object);
  return value != -1 || !PyErr_Occurred();
}

bool TakeNumbers(PyObject* object, int count, const Place& place, double* values) {
  for (int i = 0; i < count; ++i) {
    PyObject* const item = PySequence_GetItem(object, i);
    const bool taken = item != nullptr && TakeNumber(item, place, values[i]);
    Py_XDECREF(item);
    if (!taken) return false;
  }
  return true;
}

bool TakeColor(PyObject* object, const Place& place, KyC24& value) {
  if (!IsSequence(object, 3))
    return RaiseMismatch(PyExc_TypeError, place, Holder<KyC24>::kExpected, object);
  KyBW8 components[3] = {};
  for (int i = 0; i < 3; ++i) {
    PyObject* const item = PySequence_GetItem(object, i);
    long long component = 0;
    const bool taken = item != nullptr && TakeInteger(item, 0, 255, place, component);
    Py_XDECREF(item);
    if (!taken) return false;
    components[i] = static_cast<KyBW8>(component);
  }
  value = KyC24(components[0], components[1], components[2]);
  return true;
}

bool TakeText(PyObject* object, const Place& place, const char*& value) {
  if (!PyUnicode_Check(object)) return RaiseMismatch(PyExc_TypeError, place, "a string", object);
  // The library keeps the address, so that the text stays for the life of the process.
  PyObject* text = Py_NewRef(object);
  PyUnicode_InternInPlace(&text);
  value = PyUnicode_AsUTF8(text);
  return value != nullptr;
}

}  // namespace ky::python
