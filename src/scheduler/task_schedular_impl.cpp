// The registry of events: entries, look-ups and package edits.
#include "scheduler/task_schedular_impl.h"

#include "tasks/task_list_builder.h"

namespace temvar {

// At unload, when the pool has no threads any more, so without a lock. Entry by entry, since
// releasers see the order of the names, for which the map's destructor doesn't care, and may call
// the scheduler.
RkTaskSchedularImpl::~RkTaskSchedularImpl() {
  while (!eventsByName_.empty()) ExtractEntry(eventsByName_.begin());
}

// The documented walk: what the index finds is what this would.
TaskPlace RkTaskSchedularImpl::Walk(const TaskName& name) const {
  for (const auto& [key, event] : eventsByName_) {
    for (const Ref<RkTaskImpl>& package : event->Packages()) {
      if (RkTaskImpl* const hit = RkTaskEventImpl::FindInPackage(package.get(), name)) {
        return {event.get(), ToPackage(package.get()), hit};
      }
    }
  }
  return {};
}

TaskPlace RkTaskSchedularImpl::FindPlace(const TaskName& name) const {
  const std::optional<TaskPlace> place = nameIndex.Find(name);
  return place ? *place : Walk(name);
}

TaskPlace RkTaskSchedularImpl::FindPlaceOf(RkTaskImpl& task) const {
  const std::optional<TaskPlace> place = nameIndex.FindNamesake(task);
  return place ? *place : Walk(TaskName(task.Name()));
}

RkTaskSchedularImpl::Owners RkTaskSchedularImpl::FindOwners(const TaskName& name) {
  MutexLock registry(registryMutex);
  const TaskPlace place = FindPlace(name);
  return {EventRef(place.event), Ref<RkTaskPackageImpl>(place.package)};
}

RkTaskSchedularImpl::EventRef RkTaskSchedularImpl::FindEventRef(const char* name) {
  if (name == nullptr) return {};
  MutexLock registry(registryMutex);
  const auto entry = eventsByName_.find(name);
  return entry == eventsByName_.end() ? EventRef() : entry->second;
}

RkTaskSchedularImpl::EventRef RkTaskSchedularImpl::FindEventListing(RkTaskImpl* package) const {
  if (const RkTaskPackageImpl* const impl = ToPackage(package)) {
    return EventRef(NameIndex::FindListing(*impl));
  }
  for (const auto& [key, event] : eventsByName_) {
    for (const Ref<RkTaskImpl>& entry : event->Packages()) {
      if (entry.get() == package) return event;
    }
  }
  return {};
}

void RkTaskSchedularImpl::StoreEvent(RkTaskEventImpl* event) {
  const auto [entry, isNew] = eventsByName_.try_emplace(event->Name());
  if (entry->second.get() != event) {
    try {
      nameIndex.AddEvent(*event, entry->first);
    } catch (...) {
      if (isNew) eventsByName_.erase(entry);
      throw;
    }
    if (!isNew) nameIndex.RemoveEvent(*entry->second, entry->first);
  }
  // Documented: the reference on an event that is overwritten is not dropped; its tasks go on.
  entry->second.Detach();
  entry->second = EventRef(event);
  if (!isNew) drainCondition.NotifyAll();
}

RkTaskSchedularImpl::Events::node_type RkTaskSchedularImpl::ExtractNamed(const char* name) {
  if (name == nullptr) return {};
  const auto entry = eventsByName_.find(name);
  if (entry == eventsByName_.end()) return {};
  Events::node_type removed = ExtractEntry(entry);
  drainCondition.NotifyAll();
  return removed;
}

RkTaskSchedularImpl::Events::node_type RkTaskSchedularImpl::ExtractEvent(
    const RkTaskEventImpl& event) {
  if (!HoldsEvent(event)) return {};
  return ExtractEntry(eventsByName_.find(event.Name()));
}

RkTaskSchedularImpl::Events::node_type RkTaskSchedularImpl::ExtractEntry(Events::iterator entry) {
  nameIndex.RemoveEvent(*entry->second, entry->first);
  return eventsByName_.extract(entry);
}

void RkTaskSchedularImpl::RestoreEntry(Events::node_type& entry) {
  auto [position, isInserted, node] = eventsByName_.insert(std::move(entry));
  entry = std::move(node);
  if (!isInserted) return;
  try {
    nameIndex.AddEvent(*position->second, position->first);
  } catch (...) {
    // Memory for a package or a task of several events, which is rare.
    entry = eventsByName_.extract(position);
    throw;
  }
}

bool RkTaskSchedularImpl::HoldsEvent(const RkTaskEventImpl& event) const {
  const auto entry = eventsByName_.find(event.Name());
  return entry != eventsByName_.end() && entry->second.get() == &event;
}

bool RkTaskSchedularImpl::IsRegistered(const RkTaskEventImpl& event) {
  MutexLock registry(registryMutex);
  return HoldsEvent(event);
}

void RkTaskSchedularImpl::RegisterEvent(RkTask* event) {
  RkTaskEventImpl* const impl = ToEvent(ToImpl(event));
  if (impl == nullptr) return;
  MutexLock registry(registryMutex);
  StoreEvent(impl);
}

void RkTaskSchedularImpl::RemoveEvent(const char* name) {
  Events::node_type removed;  // Dropped when the mutex is free.
  MutexLock registry(registryMutex);
  removed = ExtractNamed(name);
}

void RkTaskSchedularImpl::RemoveEventLocked(const char* name) { ExtractNamed(name); }

RkTask* RkTaskSchedularImpl::FindTask(const char* name) {
  if (name == nullptr) return nullptr;
  MutexLock registry(registryMutex);
  return Ref<RkTaskImpl>(FindPlace(TaskName(name)).task).Detach();
}

RkTask* RkTaskSchedularImpl::FindEvent(const char* name) { return FindEventRef(name).Detach(); }

RkTask* RkTaskSchedularImpl::FindEventOfTask(const char* taskName) {
  return taskName == nullptr ? nullptr : FindOwners(TaskName(taskName)).event.Detach();
}

RkTask* RkTaskSchedularImpl::FindEventOfPackage(RkTask* package) {
  RkTaskImpl* const impl = ToImpl(package);
  if (impl == nullptr) return nullptr;
  MutexLock registry(registryMutex);
  return FindEventListing(impl).Detach();
}

RkTaskPackage* RkTaskSchedularImpl::FindPackageOfTask(const char* taskName) {
  return taskName == nullptr ? nullptr : FindOwners(TaskName(taskName)).package.Detach();
}

TaskListNode* RkTaskSchedularImpl::ListCurrentTasks(RkTask* event) {
  const RkTaskEventImpl* const impl = ToEvent(ToImpl(event));
  if (impl == nullptr) return nullptr;
  TaskListBuilder list;
  MutexLock registry(registryMutex);
  for (const Ref<RkTaskImpl>& entry : impl->Packages()) {
    const RkTaskPackageImpl* const package = ToPackage(entry.get());
    if (package == nullptr || package->CurrentIndex() >= package->Tasks().size()) continue;
    const Ref<RkTaskImpl>& current = package->Tasks()[package->CurrentIndex()];
    if (current) list.Append(current);
  }
  return list.Finish();
}

void RkTaskSchedularImpl::FreeTaskList(TaskListNode* list) { ReleaseTaskList(list); }

bool RkTaskSchedularImpl::InsertTaskAfter(RkTask* newTask, RkTask* existing) {
  if (newTask == nullptr || existing == nullptr) return false;
  MutexLock registry(registryMutex);
  const TaskPlace place = FindPlace(TaskName(existing->GetName()));
  return place.package != nullptr && place.package->InsertAfter(existing, newTask);
}

bool RkTaskSchedularImpl::InsertTaskAfterName(RkTask* newTask, const char* existingName) {
  const auto existing = Ref<RkTaskImpl>::Adopt(ToImpl(FindTask(existingName)));
  return existing && InsertTaskAfter(newTask, existing.get());
}

uint64_t RkTaskSchedularImpl::GetEventCount() {
  MutexLock registry(registryMutex);
  return eventsByName_.size();
}

}  // namespace temvar
