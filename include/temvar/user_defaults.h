#ifndef TEMVAR_USER_DEFAULTS_H_
#define TEMVAR_USER_DEFAULTS_H_

#include "temvar/export.h"
#include "temvar/types.h"

// Three numbers written in one text, as in "7,8,9".
struct IntTriple {
  int32_t First;   // Up to the first comma.
  int32_t Second;  // Between the first two commas.
  int32_t Third;   // After the second comma.
};

// An application's settings: a JSON document in memory, backed by one UTF-8 file. Its members are
// the host's own; there is no schema. A store lives to the end of the process.
//
// Handles: a Value* points to a value in the document, a Member* to a name with its value. Both
// belong to the document and are valid until ReleaseDocument, or until a setter adds a member to
// the object that holds them. Texts are valid until ReleaseDocument, also after they were
// overwritten.
//
// `parent` is the object that an operation works on; null means the root. A parent that is no
// object has no members and takes none. It must belong to the store that is asked. A null key names
// no member. A value of another type than the one asked for reads as the empty text, 0 or null.
//
// After ReleaseDocument, reads are empty and writes do nothing. A store is used by one thread at a
// time. What allocates throws std::bad_alloc, but for Save; the document is then as it was. Memory
// that a setter has taken before stays until ReleaseDocument.
class TMVUserDefaults {
 public:
  class Value;
  class Member;

  // Sets the first member named `key` to a copy of `value` (null: the empty text), whatever type it
  // had; appends a member if there is none. Memory of the old value stays until ReleaseDocument.
  virtual void SetString(const char* key, const char* value, Value* parent) = 0;

  // The same with a number.
  virtual void SetInt(const char* key, int32_t value, Value* parent) = 0;

  // Whether there is a member named `key`. Look-ups are linear in the number of members.
  virtual bool HasKey(const char* key, Value* parent) = 0;

  // The text of a member, owned by the document; the empty text if there is none.
  virtual const char* GetString(const char* key, Value* parent) = 0;

  // The integer of a member, of a larger one its low 32 bits; 0 if there is none. A number with a
  // fraction or an exponent is no integer.
  virtual int32_t GetInt(const char* key, Value* parent) = 0;

  // Three numbers from a member's text, split at its first two commas. Of each piece the leading
  // number counts ("9z" is 9, no digits are 0, beyond 32 bits is the nearest); a missing piece is
  // 0.
  virtual IntTriple GetIntTriple(const char* key, Value* parent) = 0;

  // Writes the document to the file of the store, which is replaced in place: no temporary file, no
  // backup. Nothing is reported or thrown. If the file can't be opened, or the text finds no memory
  // or needs over 1 GiB, the file stays as it is; if the disk is full, it holds the beginning of
  // the text. The document is unaffected by all of these.
  virtual void Save() = 0;

  // Whether the file was there and valid when the store was made.
  virtual bool IsLoaded() = 0;

  // The path that the store was made with, owned by the store.
  virtual const char* GetFilePath() = 0;

  // Drops the document with all handles and texts, for good. The file stays. A new Init under the
  // same name is the way to a fresh document. A second call does nothing.
  virtual void ReleaseDocument() = 0;

  // The value of a member. If there is none: a null value, shared by all stores; never a null
  // pointer.
  virtual Value* GetValue(const char* key, Value* parent) = 0;

  // The root: an object, or an array if the file holds one. After ReleaseDocument the shared null
  // value.
  virtual Value* GetRootValue() = 0;

  // The operations from here on look at the handle alone and take handles of any store. A null
  // handle reads like a null value.

  // Number of elements of an array, else 0.
  virtual uint32_t GetArraySize(Value* value) = 0;

  // Element of an array. Null if `value` is no array or `index` is beyond its end.
  virtual Value* GetArrayElement(Value* value, uint32_t index) = 0;

  // First member of an object and the place after the last one: equal for an empty object. Both
  // null if `value` is no object.
  virtual Member* GetMemberBegin(Value* value) = 0;
  virtual Member* GetMemberEnd(Value* value) = 0;

  // The member `count` places further on. Null stays null. The caller keeps within the object.
  virtual Member* AdvanceMember(Member* member, uint32_t count) = 0;

  // The name of a member, as a text value, and its value. Null for null.
  virtual Value* GetMemberName(Member* member) = 0;
  virtual Value* GetMemberValue(Member* member) = 0;

  // The text or the integer that a value holds, as documented for GetString and GetInt.
  virtual const char* GetValueString(Value* value) = 0;
  virtual int32_t GetValueInt(Value* value) = 0;

  // The value as JSON on one line without blanks between its tokens. The caller frees the text with
  // FreeString. Throws std::bad_alloc, also for a text that needs over 1 GiB.
  virtual char* StringifyValue(Value* value) = 0;

 protected:
  ~TMVUserDefaults() = default;
};

// Makes a store from the file at `path` and registers it as `name`. True if the file was there and
// valid. Else the store is empty and just as usable: the next Save makes the file, or replaces a
// damaged one. An earlier store of that name leaves the registry; pointers to it keep working.
// The registry has no lock: finish initialisation before other threads ask for stores.
// Throws std::bad_alloc; nothing is registered then.
TMV_API bool InitUserDefaults(const char* name, const char* path);

// The store registered as `name`, null if there is none.
TMV_API TMVUserDefaults* GetUserDefaults(const char* name);

// The same for the store called "UserDefault".
TMV_API bool InitStandardUserDefaults(const char* path);
TMV_API TMVUserDefaults* StandardUserDefaults();

#endif  // TEMVAR_USER_DEFAULTS_H_
